// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_records.h"
#include "detection/real_fft.h"

#include <array>
#include <cstddef>
#include <span>

namespace sordin {

/// Reduces one hop of samples to its level and a coarse spectral shape. Instead of all samples it transforms
/// at most three frames, at the start, the middle and the end of the hop. Not re-entrant: the scratch is
/// reused.
class FeatureExtractor {
public:
    /// Samples of one transformed frame.
    static constexpr std::size_t frameLength = 1024;

    /// Band b covers the transform's bins bandEdges[b] up to but excluding bandEdges[b + 1]: octaves up to
    /// the Nyquist frequency. Bin 0 (the mean) belongs to none.
    static constexpr std::array<std::size_t, bandCount + 1> bandEdges{1, 4, 8, 16, 32, 64, 128, 256, 512};

    /// Ends the process if the transform cannot be prepared.
    FeatureExtractor();

    /// `db` is 20 log10 of the root mean square over all samples, -140 dB at least. `bands` is the mean power
    /// of the frames, 10 log10(sum |2 X[k]|^2 / frameLength^2 + 1e-10); all -100 dB for a hop shorter than a
    /// frame. Depends on nothing but `samples`, which may be of any number.
    [[nodiscard]] FrameFeatures extract(std::span<const float> samples);

    /// The Hann window scaled to a root mean square of 1: 0.8165 (1 - cos(2 pi n / frameLength)).
    [[nodiscard]] const std::array<float, frameLength>& window() const { return window_; }

private:
    static constexpr std::size_t binCount = frameLength / 2;

    void spectrum(std::span<const float> frame);

    RealFft setup_{frameLength};
    std::array<float, frameLength> window_;
    std::array<float, frameLength> windowed_;
    std::array<float, binCount> real_;
    std::array<float, binCount> imag_;
    std::array<float, binCount> mags_;  // squared magnitudes of the last frame
    std::array<float, binCount> acc_;   // their sum over the hop's frames
};

}  // namespace sordin
