// SPDX-License-Identifier: MIT
#include "classifier/speech_mask_file.h"

#include "classifier/weights_file.h"

namespace sordin {

namespace {

constexpr WeightsFormat speechMaskFormat{"SORDINVM", 1, std::size_t{4} << 20U, "speech mask"};
constexpr std::uint32_t mostMaskValues = 4'096;

class MaskReader {
public:
    explicit MaskReader(std::span<const std::byte> payload) : reader_(payload) {}

    [[nodiscard]] SpeechMaskModel read() {
        SpeechMaskModel mask;
        mask.rate = reader_.size(96'000, "the sample rate is out of range");
        require(mask.rate >= 4'000, "the sample rate is out of range");
        mask.window = reader_.size(mostMaskValues, "the window is out of range");
        require(mask.window >= 64 && mask.window % 2 == 0, "the window is out of range");
        mask.floor = reader_.number(1e-12, 1, "the floor is out of range");
        mask.shift = reader_.number(-100, 100, "the shift is out of range");
        mask.scale = reader_.number(0.01, 100, "the scale is out of range");
        mask.strength = reader_.number(0, 4, "the strength is out of range");
        mask.least = reader_.number(0, 1, "the least gain is out of range");
        const std::uint32_t bins = mask.window / 2 + 1;
        mask.front = dense(bins);
        mask.first = recurrent(mask.front.out);
        const std::uint32_t units = mask.first.recurrent.in;
        mask.second = recurrent(units);
        require(mask.second.recurrent.in == units, fit);
        mask.gains = dense(units);
        require(mask.gains.out == bins, "the number of gains differs from the number of bins");
        require(reader_.atEnd(), "unexpected data after the mask");
        return mask;
    }

private:
    static constexpr auto fit = "a layer does not fit the layer before";

    [[nodiscard]] SoundModel::Dense dense(std::uint32_t inputs) {
        SoundModel::Dense layer;
        layer.in = reader_.size(mostMaskValues, fit);
        require(layer.in == inputs, fit);
        layer.out = reader_.size(mostMaskValues, "a layer has too many outputs or none");
        layer.weights = reader_.halves(std::uint64_t{layer.in} * layer.out);
        layer.bias = reader_.numbers(layer.out);
        return layer;
    }

    [[nodiscard]] SpeechMaskModel::Recurrent recurrent(std::uint32_t inputs) {
        SpeechMaskModel::Recurrent layer;
        layer.input.in = reader_.size(mostMaskValues, fit);
        require(layer.input.in == inputs, fit);
        layer.recurrent.in = reader_.size(mostMaskValues, "a layer has too many units or none");
        layer.input.out = layer.recurrent.out = 3 * layer.recurrent.in;
        for (SoundModel::Dense* part : {&layer.input, &layer.recurrent}) {
            part->weights = reader_.halves(std::uint64_t{part->in} * part->out);
        }
        for (SoundModel::Dense* part : {&layer.input, &layer.recurrent}) {
            part->bias = reader_.numbers(part->out);
        }
        return layer;
    }

    WeightsReader reader_;
};

}  // namespace

SpeechMaskModel readSpeechMask(std::span<const std::byte> bytes, const std::string& name) {
    try {
        return MaskReader(weightsPayload(bytes, speechMaskFormat)).read();
    } catch (const WeightsRefusal& refusal) {
        throw SpeechMaskError(name + ": " + refusal.what());
    }
}

SpeechMaskModel loadSpeechMask(const std::filesystem::path& path) {
    try {
        return readSpeechMask(weightsFileBytes(path, speechMaskFormat), path.string());
    } catch (const WeightsRefusal& refusal) {
        throw SpeechMaskError(path.string() + ": " + refusal.what());
    }
}

}  // namespace sordin
