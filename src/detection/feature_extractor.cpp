// SPDX-License-Identifier: MIT
#include "detection/feature_extractor.h"

#include "detection/sample_math.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sordin {

namespace {

constexpr float emptyBand = -100.0F;  // dB, 10 log10(powerFloor)
constexpr float powerFloor = 1e-10F;
constexpr float levelFloor = 1e-7F;  // amplitude, -140 dB full scale

struct FrameStarts {
    std::array<std::size_t, 3> positions;
    std::size_t count;
};

/// Frames at the start, in the middle and at the end of the hop. Only the last one if the hop is shorter than
/// three frames, none if it is shorter than one.
FrameStarts frameStarts(std::size_t samples) {
    constexpr std::size_t length = FeatureExtractor::frameLength;
    if (samples < length) {
        return {{}, 0};
    }
    const std::size_t last = samples - length;
    if (samples < 3 * length) {
        return {{last}, 1};
    }
    return {{0, last / 2, last}, 3};
}

}  // namespace

FeatureExtractor::FeatureExtractor() {
    constexpr double step = 2 * std::numbers::pi / frameLength;
    for (std::size_t n = 0; n < frameLength; ++n) {
        window_[n] = static_cast<float>(0.8165 * (1 - std::cos(step * static_cast<double>(n))));
    }
}

void FeatureExtractor::spectrum(std::span<const float> frame) {
    for (std::size_t i = 0; i < frameLength; ++i) {
        windowed_[i] = frame[i] * window_[i];
    }
    setup_.forward(windowed_, real_, imag_);
    for (std::size_t k = 0; k < binCount; ++k) {
        mags_[k] = real_[k] * real_[k] + imag_[k] * imag_[k];
    }
}

FrameFeatures FeatureExtractor::extract(std::span<const float> samples) {
    const float rms = rootMeanSquare(samples);
    acc_.fill(0);
    const FrameStarts starts = frameStarts(samples.size());
    for (std::size_t i = 0; i < starts.count; ++i) {
        spectrum(samples.subspan(starts.positions[i], frameLength));
        for (std::size_t k = 0; k < binCount; ++k) {
            acc_[k] += mags_[k];
        }
    }

    FrameFeatures features;
    features.bands.fill(emptyBand);
    if (starts.count > 0) {
        const float fullScale = static_cast<float>(starts.count) * (frameLength * frameLength);
        for (std::size_t band = 0; band < bandCount; ++band) {
            float sum = 0;
            for (std::size_t k = bandEdges[band]; k < bandEdges[band + 1]; ++k) {
                sum += acc_[k];
            }
            features.bands[band] = 10.0F * std::log10(sum / fullScale + powerFloor);
        }
    }
    features.db = 20.0F * std::log10(std::max(rms, levelFloor));
    return features;
}

}  // namespace sordin
