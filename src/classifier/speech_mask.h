// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/sound_model.h"
#include "detection/real_fft.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace sordin {

/// Everything a trained speech mask is made of. Sizes are above 0; what readSpeechMask has returned keeps the
/// limits that are stated there.
struct SpeechMaskModel {
    using Dense = SoundModel::Dense;

    /// A gated recurrent unit. Its three gates are, in this order: reset, update, new.
    struct Recurrent {
        Dense input;      ///< three times as many outputs as units, one gate after the other
        Dense recurrent;  ///< of the units' own last values, the same outputs
    };

    std::uint32_t rate = 0;    ///< Hz
    std::uint32_t window = 0;  ///< samples in a frame; frames overlap by half
    float floor = 0;           ///< added to each magnitude before the logarithm
    float shift = 0;           ///< added to the logarithm
    float scale = 0;           ///< by which the sum is divided
    float strength = 0;        ///< exponent of the gains; 0 changes nothing
    float least = 0;           ///< the lowest gain, 0 to 1
    Dense front;               ///< of a frame's scaled logarithms, followed by a ReLU
    Recurrent first;
    Recurrent second;
    Dense gains;  ///< of the sum of both units' values, followed by the logistic function; one for each bin
};

/// Takes music and noise off a voice: a network gives each frame of the short-time spectrum a gain for each
/// bin. The gain of a bin is max(least, g^strength), where g from 0 to 1 estimates the share of the voice in
/// its magnitude. What comes out is half a window behind what went in, and less than another half is held
/// back: with windows of 32 ms it is up to 32 ms late. For one thread at a time.
class SpeechMask {
public:
    explicit SpeechMask(SpeechMaskModel model);
    ~SpeechMask();
    SpeechMask(const SpeechMask&) = delete;
    SpeechMask& operator=(const SpeechMask&) = delete;

    /// Forgets everything that was heard.
    void reset();

    /// Takes mono samples, -1 to 1, at the model's rate. Appends cleaned samples to `cleaned`: in all as many
    /// as have come in, rounded down to whole halves of a window. Samples that are not finite count as 0.
    void process(std::span<const float> samples, std::vector<float>& cleaned);

private:
    class Network;

    void completeFrame(std::vector<float>& cleaned);

    const SpeechMaskModel model_;
    const std::unique_ptr<Network> network_;
    RealFft fft_;
    std::vector<float> window_;   // root of a Hann window
    std::vector<float> frame_;    // the last `window` samples
    std::size_t filled_ = 0;      // new samples in the second half of it
    std::vector<float> overlap_;  // second half of the last frame's result
    std::vector<float> samples_;
    std::vector<float> real_;  // the spectrum, packed as RealFft does it
    std::vector<float> imag_;
    std::vector<float> logarithms_;  // for each bin
};

}  // namespace sordin
