// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/sound_model.h"
#include "detection/real_fft.h"

#include <span>
#include <vector>

namespace sordin {

/// Computes the network's input from samples: frames of logarithmic mel bands and normalized patches of such
/// frames. Allocates only in the constructor. Not thread-safe.
class MelFrontEnd {
public:
    explicit MelFrontEnd(const SoundModel::FrontEnd& settings);

    /// Computes the bands of one frame. `samples` holds one window of samples, `bands` takes one value for
    /// each mel band, in nepers.
    void frame(std::span<const float> samples, std::span<float> bands);

    /// The value of every band for silence, nepers.
    [[nodiscard]] float silence() const { return silence_; }

    /// Normalizes a patch of consecutive frames: limits it to `range` below its maximum, subtracts its mean,
    /// divides by `scale` and averages groups of `pool` frames. Works in place: overwrites `patch` and
    /// returns its beginning, which holds the result (size: inputSize()).
    [[nodiscard]] std::span<const float> normalise(std::span<float> patch) const;

private:
    /// Weights of consecutive bins in one mel band.
    struct Band {
        std::size_t firstBin = 0;
        std::vector<float> weights;
    };

    const SoundModel::FrontEnd settings_;
    float silence_;
    std::vector<float> window_;
    std::vector<Band> bands_;
    RealFft fft_;
    std::vector<float> samples_;  // input of the transform: the windowed frame, then zeros
    std::vector<float> real_;
    std::vector<float> imag_;
    std::vector<float> magnitudes_;
};

}  // namespace sordin
