// SPDX-License-Identifier: MIT
#include "classifier/sound_model_file.h"

#include "classifier/weights_file.h"

#include <utility>

namespace sordin {

namespace {

constexpr WeightsFormat soundModelFormat{"SORDINSM", 1, SoundModelLimits::payloadBytes, "sound model"};

/// Reads the payload and adds up the memory and the computation that the model needs. Checks both before it
/// allocates.
class ModelReader {
public:
    explicit ModelReader(std::span<const std::byte> payload) : reader_(payload) {}

    [[nodiscard]] SoundModel read() {
        SoundModel model;
        model.frontEnd = frontEnd();
        PlaneSize plane = inputSize(model.frontEnd);
        std::uint64_t channels = 1;
        const auto layers = reader_.size(mostLayers, "the number of convolutions is out of range");
        for (std::uint32_t i = 0; i < layers; ++i) {
            model.convolutions.push_back(convolution(channels, plane));
            channels = model.convolutions.back().out;
            plane = outputSize(model.convolutions.back(), plane);
        }
        model.sections = reader_.size(mostSections, "the number of sections is out of range");
        require(model.sections <= plane.times, "more sections than time steps");
        model.embedding = dense(std::uint64_t{2} * model.sections * channels * plane.frequencies);
        model.memory = reader_.size(mostMemory, "the number of embeddings is out of range");
        denseLayers(model);
        labels(model);
        require(reader_.atEnd(), "unexpected data after the model");
        return model;
    }

private:
    static constexpr std::uint32_t mostLayers = 32;
    static constexpr std::uint32_t mostSections = 64;
    static constexpr std::uint32_t mostMemory = 64;
    static constexpr std::uint32_t mostLabels = 64;
    static constexpr std::uint32_t mostChannels = 1'024;
    static constexpr std::uint32_t mostStride = 4;
    static constexpr std::uint32_t mostValues = 65'536;

    void addPlane(std::uint64_t channels, PlaneSize plane) {
        // SoundNetwork's layout: with a border, channels padded to whole blocks.
        planeValues_ += (channels + 7) * (plane.times + 2) * (plane.frequencies + 2);
        require(planeValues_ <= SoundModelLimits::planeValues, "the model needs too much memory");
    }

    void addWork(double multiplicationsPerSecond) {
        work_ += multiplicationsPerSecond;
        require(work_ <= static_cast<double>(SoundModelLimits::workPerSecond),
                "the model needs too much time");
    }

    [[nodiscard]] SoundModel::FrontEnd frontEnd() {
        constexpr auto lengths = "the window, hop and transform do not fit together";
        constexpr auto bands = "the bands are out of range";
        SoundModel::FrontEnd result;
        result.rate = reader_.size(96'000, "the sample rate is out of range");
        require(result.rate >= 4'000 && result.rate % 2 == 0, "the sample rate is out of range");
        result.window = reader_.size(8'192, lengths);
        result.hop = reader_.size(result.window, lengths);
        result.transform = reader_.size(8'192, lengths);
        require(result.window <= result.transform && result.transform % 2 == 0, lengths);
        require(resultInterval(result) % result.hop == 0, "half a second is not a whole number of hops");
        result.mels = reader_.size(256, bands);
        result.low = reader_.number(0, result.rate, bands);
        result.high = reader_.number(0, 0.5 * result.rate, bands);
        require(result.low < result.high, bands);
        result.floor = reader_.number(1e-12, 1, "the floor is out of range");
        result.range = reader_.number(0.01, 100, "the range is out of range");
        result.scale = reader_.number(0.01, 100, "the scale is out of range");
        result.frames = reader_.size(60 * result.rate / result.hop, "the patch is too long");
        result.pool = reader_.size(result.frames, "the number of pooled frames is out of range");
        addPlane(1, {result.frames, result.mels});
        // Estimated operations per second of the Fourier transforms.
        addWork(static_cast<double>(result.rate) / result.hop * result.transform * 20);
        return result;
    }

    [[nodiscard]] SoundModel::Convolution convolution(std::uint64_t channels, PlaneSize input) {
        constexpr auto fit = "a convolution does not fit the layer before";
        SoundModel::Convolution layer;
        layer.in = reader_.size(mostChannels, fit);
        require(layer.in == channels, fit);
        layer.out = reader_.size(mostChannels, "a convolution has too many channels or none");
        layer.strideTime = reader_.size(mostStride, "a stride is out of range");
        layer.strideFrequency = reader_.size(mostStride, "a stride is out of range");
        const std::uint32_t residual = reader_.integer();
        require(residual <= 1, "a residual flag is neither 0 nor 1");
        layer.residual = residual == 1;
        require(!layer.residual ||
                    (layer.in == layer.out && layer.strideTime == 1 && layer.strideFrequency == 1),
                "a residual layer changes size");
        const PlaneSize output = outputSize(layer, input);
        addPlane(layer.out, output);
        const std::uint64_t weights = std::uint64_t{9} * layer.in * layer.out;
        addWork(2.0 * static_cast<double>(weights * output.times * output.frequencies));
        layer.weights = reader_.halves(weights);
        layer.bias = reader_.numbers(layer.out);
        return layer;
    }

    [[nodiscard]] SoundModel::Dense dense(std::uint64_t inputs) {
        constexpr auto fit = "a dense layer does not fit the layer before";
        SoundModel::Dense layer;
        layer.in = reader_.size(mostValues, fit);
        require(layer.in == inputs, fit);
        layer.out = reader_.size(mostValues, "a dense layer has too many outputs or none");
        const std::uint64_t weights = std::uint64_t{layer.in} * layer.out;
        addWork(2.0 * static_cast<double>(weights));
        layer.weights = reader_.halves(weights);
        layer.bias = reader_.numbers(layer.out);
        return layer;
    }

    void denseLayers(SoundModel& model) {
        const auto layers = reader_.size(mostLayers, "the number of dense layers is out of range");
        std::uint64_t inputs = std::uint64_t{model.memory} * model.embedding.out;
        for (std::uint32_t i = 0; i < layers; ++i) {
            model.dense.push_back(dense(inputs));
            inputs = model.dense.back().out;
        }
    }

    void labels(SoundModel& model) {
        const auto count = reader_.size(mostLabels, "the number of labels is out of range");
        require(count == model.dense.back().out, "the number of labels differs from the number of outputs");
        for (std::uint32_t i = 0; i < count; ++i) {
            SoundModel::Label label;
            for (const std::byte byte : reader_.take(reader_.integer(1))) {
                const char c = std::to_integer<char>(byte);
                require(c >= ' ' && c <= '~', "a label is not printable ASCII");
                label.identifier.push_back(c);
            }
            require(!label.identifier.empty(), "a label is empty");
            label.gain = reader_.number();
            label.offset = reader_.number();
            model.labels.push_back(std::move(label));
        }
    }

    WeightsReader reader_;
    std::uint64_t planeValues_ = 0;
    double work_ = 0;
};

}  // namespace

SoundModel readSoundModel(std::span<const std::byte> bytes, const std::string& name) {
    try {
        return ModelReader(weightsPayload(bytes, soundModelFormat)).read();
    } catch (const WeightsRefusal& refusal) {
        throw SoundModelError(name + ": " + refusal.what());
    }
}

SoundModel loadSoundModel(const std::filesystem::path& path) {
    try {
        return readSoundModel(weightsFileBytes(path, soundModelFormat), path.string());
    } catch (const WeightsRefusal& refusal) {
        throw SoundModelError(path.string() + ": " + refusal.what());
    }
}

}  // namespace sordin
