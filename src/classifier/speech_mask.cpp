// SPDX-License-Identifier: MIT
#include "classifier/speech_mask.h"

#include "classifier/natural_logarithm.h"
#include "detection/sample_math.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace sordin {

namespace {

float logistic(float value) {
    return 1.0F / (1.0F + std::exp(-value));
}

void applyLayer(const SoundModel::Dense& layer, std::span<const float> input, std::span<float> output) {
    const std::span weights(layer.weights);
    for (std::size_t i = 0; i < layer.out; ++i) {
        output[i] = dotProduct(weights.subspan(i * layer.in, layer.in), input) + layer.bias[i];
    }
}

}  // namespace

/// Computes the gains of a frame from the scaled logarithms of its magnitudes.
class SpeechMask::Network {
public:
    explicit Network(const SpeechMaskModel& model)
        : model_(model),
          hidden_(model.front.out),
          first_(model.first),
          second_(model.second),
          sum_(model.gains.in),
          gains_(model.gains.out) {}

    void reset() {
        first_.reset();
        second_.reset();
    }

    [[nodiscard]] std::span<const float> gains(std::span<const float> logarithms) {
        applyLayer(model_.front, logarithms, hidden_);
        std::transform(hidden_.begin(), hidden_.end(), hidden_.begin(),
                       [](float value) { return std::max(value, 0.0F); });
        const auto first = first_.step(hidden_);
        const auto second = second_.step(first);
        std::transform(first.begin(), first.end(), second.begin(), sum_.begin(), std::plus<>());
        applyLayer(model_.gains, sum_, gains_);
        for (float& gain : gains_) {
            gain = std::max(model_.least, std::pow(logistic(gain), model_.strength));
        }
        return gains_;
    }

private:
    class Unit {
    public:
        explicit Unit(const SpeechMaskModel::Recurrent& layer)
            : layer_(layer),
              values_(layer.recurrent.in),
              fromInput_(layer.input.out),
              fromValues_(layer.input.out) {}

        void reset() { std::fill(values_.begin(), values_.end(), 0.0F); }

        [[nodiscard]] std::span<const float> step(std::span<const float> input) {
            applyLayer(layer_.input, input, fromInput_);
            applyLayer(layer_.recurrent, values_, fromValues_);
            const std::size_t units = values_.size();
            for (std::size_t i = 0; i < units; ++i) {
                const float reset = logistic(fromInput_[i] + fromValues_[i]);
                const float update = logistic(fromInput_[units + i] + fromValues_[units + i]);
                const float fresh = std::tanh(fromInput_[2 * units + i] + reset * fromValues_[2 * units + i]);
                values_[i] = (1.0F - update) * fresh + update * values_[i];
            }
            return values_;
        }

    private:
        const SpeechMaskModel::Recurrent& layer_;
        std::vector<float> values_;
        std::vector<float> fromInput_;
        std::vector<float> fromValues_;
    };

    const SpeechMaskModel& model_;
    std::vector<float> hidden_;
    Unit first_;
    Unit second_;
    std::vector<float> sum_;
    std::vector<float> gains_;
};

SpeechMask::SpeechMask(SpeechMaskModel model)
    : model_(std::move(model)),
      network_(std::make_unique<Network>(model_)),
      fft_(model_.window),
      window_(model_.window),
      frame_(model_.window),
      overlap_(model_.window / 2),
      samples_(model_.window),
      real_(model_.window / 2),
      imag_(model_.window / 2),
      logarithms_(model_.window / 2 + 1) {
    for (std::size_t n = 0; n < window_.size(); ++n) {
        // The squares of overlapping windows add up to 1.
        window_[n] = static_cast<float>(
            std::sin(std::numbers::pi * static_cast<double>(n) / static_cast<double>(window_.size())));
    }
}

SpeechMask::~SpeechMask() = default;

void SpeechMask::reset() {
    network_->reset();
    std::fill(frame_.begin(), frame_.end(), 0.0F);
    std::fill(overlap_.begin(), overlap_.end(), 0.0F);
    filled_ = 0;
}

void SpeechMask::process(std::span<const float> samples, std::vector<float>& cleaned) {
    const std::size_t half = overlap_.size();
    while (!samples.empty()) {
        const auto taken = samples.first(std::min(samples.size(), half - filled_));
        std::transform(taken.begin(), taken.end(),
                       frame_.begin() + static_cast<std::ptrdiff_t>(half + filled_),
                       [](float sample) { return std::isfinite(sample) ? sample : 0.0F; });
        filled_ += taken.size();
        samples = samples.subspan(taken.size());
        if (filled_ == half) {
            completeFrame(cleaned);
        }
    }
}

void SpeechMask::completeFrame(std::vector<float>& cleaned) {
    const std::size_t half = overlap_.size();
    std::transform(frame_.begin(), frame_.end(), window_.begin(), samples_.begin(), std::multiplies<>());
    fft_.forward(samples_, real_, imag_);
    const auto logarithm = [this](float real, float imag) {
        const float magnitude = std::sqrt(real * real + imag * imag) / 2;  // RealFft doubles the values
        return (naturalLogarithm(magnitude + model_.floor) + model_.shift) / model_.scale;
    };
    logarithms_[0] = logarithm(real_[0], 0);
    logarithms_[half] = logarithm(imag_[0], 0);
    for (std::size_t k = 1; k < half; ++k) {
        logarithms_[k] = logarithm(real_[k], imag_[k]);
    }
    const auto gains = network_->gains(logarithms_);
    real_[0] *= gains[0];
    imag_[0] *= gains[half];
    for (std::size_t k = 1; k < half; ++k) {
        real_[k] *= gains[k];
        imag_[k] *= gains[k];
    }
    fft_.inverse(real_, imag_, samples_);
    std::transform(samples_.begin(), samples_.end(), window_.begin(), samples_.begin(), std::multiplies<>());
    for (std::size_t n = 0; n < half; ++n) {
        cleaned.push_back(overlap_[n] + samples_[n]);
        overlap_[n] = samples_[half + n];
        frame_[n] = frame_[half + n];
    }
    filled_ = 0;
}

}  // namespace sordin
