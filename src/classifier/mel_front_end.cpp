// SPDX-License-Identifier: MIT
#include "classifier/mel_front_end.h"

#include "classifier/natural_logarithm.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sordin {

namespace {

/// Hertz to mel: 1127 ln(1 + f / 700).
double mel(double frequency) {
    return 1127 * std::log(1 + frequency / 700);
}

/// A periodic Hann window, halved because RealFft doubles the values.
std::vector<float> halvedHann(std::uint32_t length) {
    std::vector<float> window(length);
    for (std::uint32_t n = 0; n < length; ++n) {
        const double hann = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * n / length);
        window[n] = static_cast<float>(0.5 * hann);
    }
    return window;
}

}  // namespace

MelFrontEnd::MelFrontEnd(const SoundModel::FrontEnd& settings)
    : settings_(settings),
      silence_(naturalLogarithm(settings.floor)),
      window_(halvedHann(settings.window)),
      fft_(settings.transform),
      samples_(settings.transform),
      real_(settings.transform / 2),
      imag_(settings.transform / 2),
      magnitudes_(settings.transform / 2) {
    const double low = mel(static_cast<double>(settings.low));
    const double step = (mel(static_cast<double>(settings.high)) - low) / (settings.mels + 1);
    for (std::uint32_t band = 0; band < settings.mels; ++band) {
        const double lower = low + step * band;
        const double centre = lower + step;
        const double upper = centre + step;
        Band& weights = bands_.emplace_back();
        // No band extends above half the rate, so the Nyquist bin has no weight.
        for (std::uint32_t bin = 1; bin < settings.transform / 2; ++bin) {
            const double at = mel(static_cast<double>(bin) * settings.rate / settings.transform);
            const double weight = std::min((at - lower) / (centre - lower), (upper - at) / (upper - centre));
            if (weight > 0) {
                if (weights.weights.empty()) {
                    weights.firstBin = bin;
                }
                weights.weights.push_back(static_cast<float>(weight));
            }
        }
    }
}

void MelFrontEnd::frame(std::span<const float> samples, std::span<float> bands) {
    std::transform(window_.begin(), window_.end(), samples.begin(), samples_.begin(), std::multiplies<>());
    fft_.forward(samples_, real_, imag_);
    for (std::size_t bin = 0; bin < magnitudes_.size(); ++bin) {
        magnitudes_[bin] = std::sqrt(real_[bin] * real_[bin] + imag_[bin] * imag_[bin]);
    }
    for (std::size_t band = 0; band < bands_.size(); ++band) {
        float sum = 0;
        const float* magnitude = magnitudes_.data() + bands_[band].firstBin;
        for (const float weight : bands_[band].weights) {
            sum += weight * *magnitude++;
        }
        bands[band] = sum + settings_.floor;
    }
    std::transform(bands.begin(), bands.end(), bands.begin(), naturalLogarithm);
}

std::span<const float> MelFrontEnd::normalise(std::span<float> patch) const {
    const float lowest = *std::max_element(patch.begin(), patch.end()) - settings_.range;
    double sum = 0;
    for (float& value : patch) {
        value = std::max(value, lowest);
        sum += static_cast<double>(value);
    }
    const auto mean = static_cast<float>(sum / static_cast<double>(patch.size()));
    const std::size_t mels = settings_.mels;
    const PlaneSize size = inputSize(settings_);
    const auto values = static_cast<float>(settings_.pool);
    for (std::size_t time = 0; time < size.times; ++time) {
        const float* const frames = patch.data() + time * settings_.pool * mels;
        float* const pooled = patch.data() + time * mels;
        for (std::size_t band = 0; band < mels; ++band) {
            float total = 0;
            for (std::size_t frame = 0; frame < settings_.pool; ++frame) {
                total += (frames[frame * mels + band] - mean) / settings_.scale;
            }
            pooled[band] = total / values;
        }
    }
    return patch.first(size.times * mels);
}

}  // namespace sordin
