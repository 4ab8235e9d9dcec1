// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/sound_model.h"
#include "detection/real_fft.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace sordin {

/// The parameters and weights of a trained speech mask. All sizes are above 0. A mask that readSpeechMask()
/// returns satisfies the limits that are stated there.
struct SpeechMaskModel {
    using Dense = SoundModel::Dense;

    /// A gated recurrent unit (GRU). The order of its gates is reset, update, new.
    struct Recurrent {
        Dense input;      ///< outputs: 3 * units, gate by gate
        Dense recurrent;  ///< of the previous state; same outputs
    };

    std::uint32_t rate = 0;    ///< Hz
    std::uint32_t window = 0;  ///< samples in a frame; frames overlap by half
    float floor = 0;           ///< added to each magnitude before the logarithm
    float shift = 0;           ///< added to the logarithm
    float scale = 0;           ///< divisor of the sum
    float strength = 0;        ///< exponent of the gains; 0 makes all gains 1
    float least = 0;           ///< the lowest gain, 0 to 1
    Dense front;               ///< input: the scaled logarithms of a frame; followed by a ReLU
    Recurrent first;
    Recurrent second;
    /// Input: the sum of the states of both units. One output for each bin, followed by the logistic
    /// function.
    Dense gains;
};

/// Suppresses music and noise behind a voice. A neural network computes a gain for each bin of each frame of
/// the short-time spectrum: max(least, g^strength), where g, 0 to 1, estimates the voice's share of the
/// magnitude. The output lags half a window behind the input, and up to another half window is buffered: with
/// windows of 32 ms the total delay is up to 32 ms. Not thread-safe.
class SpeechMask {
public:
    explicit SpeechMask(SpeechMaskModel model);
    ~SpeechMask();
    SpeechMask(const SpeechMask&) = delete;
    SpeechMask& operator=(const SpeechMask&) = delete;

    /// Returns to the state after construction.
    void reset();

    /// Takes mono samples, -1 to 1, at the model's rate. Appends the cleaned samples to `cleaned`; the total
    /// output is the total input rounded down to whole half windows. Samples that are not finite count as 0.
    void process(std::span<const float> samples, std::vector<float>& cleaned);

private:
    class Network;

    void completeFrame(std::vector<float>& cleaned);

    const SpeechMaskModel model_;
    const std::unique_ptr<Network> network_;
    RealFft fft_;
    std::vector<float> window_;   // square root of a Hann window
    std::vector<float> frame_;    // the last `window` samples
    std::size_t filled_ = 0;      // number of new samples in the second half of frame_
    std::vector<float> overlap_;  // second half of the previous frame's output
    std::vector<float> samples_;
    std::vector<float> real_;  // spectrum in RealFft's layout
    std::vector<float> imag_;
    std::vector<float> logarithms_;  // scaled logarithm of each bin's magnitude
};

}  // namespace sordin
