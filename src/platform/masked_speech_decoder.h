// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/speech_mask.h"
#include "platform/speech_decoder.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace sordin {

/// Sends samples through a speech mask to a decoder. The words come up to one window of the mask (32 ms)
/// later. A clean voice bypasses the mask, which would only remove parts of the voice.
class MaskedSpeechDecoder final : public SpeechDecoder {
public:
    /// The mask must be for the decoder's sample rate.
    MaskedSpeechDecoder(std::unique_ptr<SpeechDecoder> decoder, SpeechMaskModel mask);

    [[nodiscard]] unsigned sampleRate() const override { return decoder_->sampleRate(); }
    void begin() override;
    void process(std::span<const std::int16_t> samples) override;
    void end() override;
    [[nodiscard]] std::vector<HeardWord> words() override { return decoder_->words(); }

private:
    void bypassForCleanVoice();

    const std::unique_ptr<SpeechDecoder> decoder_;
    const std::size_t window_;  // samples
    const float kept_;          // factor of both energies per half window
    SpeechMask mask_;
    bool hearing_ = false;
    float energyPassed_ = 0;    // recent energy of the mask's output
    float energyRemoved_ = 0;   // recent energy of the difference to its input
    std::vector<float> input_;  // input that the mask's next output belongs to
    std::vector<float> cleaned_;
    std::vector<std::int16_t> integers_;
};

}  // namespace sordin
