// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/sound_model.h"
#include "detection/real_fft.h"

#include <span>
#include <vector>

namespace sordin {

/// Turns samples into what the network sees: frames of logarithmic mel bands, and normalised patches of such
/// frames. Allocates nothing once it is made; not re-entrant.
class MelFrontEnd {
public:
    explicit MelFrontEnd(const SoundModel::FrontEnd& settings);

    /// The bands of one frame: `samples` holds a window of them, `bands` takes one value for each mel band,
    /// nepers.
    void frame(std::span<const float> samples, std::span<float> bands);

    /// What frame() gives for silence, in every band.
    [[nodiscard]] float silence() const { return silence_; }

    /// Brings a patch of frames, one after the other, to a level of its own and averages them in groups. The
    /// values of `patch` are used up; the result fills as much of its beginning as inputSize() says, which is
    /// what is returned.
    [[nodiscard]] std::span<const float> normalise(std::span<float> patch) const;

private:
    /// One band's share of consecutive bins.
    struct Band {
        std::size_t firstBin = 0;
        std::vector<float> weights;
    };

    const SoundModel::FrontEnd settings_;
    float silence_;
    std::vector<float> window_;
    std::vector<Band> bands_;
    RealFft fft_;
    std::vector<float> samples_;  // of one transform, zeros behind the window
    std::vector<float> real_;
    std::vector<float> imag_;
    std::vector<float> magnitudes_;
};

}  // namespace sordin
