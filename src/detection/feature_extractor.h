// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_records.h"
#include "detection/real_fft.h"

#include <array>
#include <cstddef>
#include <span>

namespace sordin {

/// Computes the level and the coarse spectral shape of a hop. To save time, transforms at most three frames
/// of 1024 samples: at the start, in the middle and at the end. Not thread-safe: reuses scratch buffers.
class FeatureExtractor {
public:
    /// Length of a transformed frame, samples.
    static constexpr std::size_t frameLength = 1024;

    /// Band b covers the bins from bandEdges[b] up to but excluding bandEdges[b + 1]: octaves up to the
    /// Nyquist frequency. No band contains bin 0 (the mean).
    static constexpr std::array<std::size_t, bandCount + 1> bandEdges{1, 4, 8, 16, 32, 64, 128, 256, 512};

    /// Ends the process if it cannot prepare the transform.
    FeatureExtractor();

    /// `db` is 20 log10 of the root mean square of all samples, at least -140 dB. `bands` is the power
    /// averaged over the frames, 10 log10(sum |2 X[k]|^2 / frameLength^2 + 1e-10); all are -100 dB if the hop
    /// is shorter than a frame. Accepts any number of samples. The result depends only on them.
    [[nodiscard]] FrameFeatures extract(std::span<const float> samples);

    /// Hann window, scaled to a root mean square of 1: 0.8165 (1 - cos(2 pi n / frameLength)).
    [[nodiscard]] const std::array<float, frameLength>& window() const { return window_; }

private:
    static constexpr std::size_t binCount = frameLength / 2;

    void spectrum(std::span<const float> frame);

    RealFft setup_{frameLength};
    std::array<float, frameLength> window_;
    std::array<float, frameLength> windowed_;
    std::array<float, binCount> real_;
    std::array<float, binCount> imag_;
    std::array<float, binCount> mags_;  // squared magnitudes of one frame
    std::array<float, binCount> acc_;   // sum of mags_ over the hop's frames
};

}  // namespace sordin
