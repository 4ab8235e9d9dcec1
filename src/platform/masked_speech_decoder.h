// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/speech_mask.h"
#include "platform/speech_decoder.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace sordin {

/// A decoder that hears its samples through a speech mask. Its words come up to one window of the mask (32
/// ms) later. A voice that is clean already reaches the decoder as it is: what the mask would take off is the
/// voice itself.
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
    void restoreCleanVoice();

    const std::unique_ptr<SpeechDecoder> decoder_;
    const std::size_t window_;  // samples
    const float kept_;          // of both energies by half a window
    SpeechMask mask_;
    bool hearing_ = false;
    float energyLeft_ = 0;      // of what the mask lets through, recent
    float energyTaken_ = 0;     // of what it takes off
    std::vector<float> input_;  // from half a window before the next cleaned sample on
    std::vector<float> cleaned_;
    std::vector<std::int16_t> integers_;
};

}  // namespace sordin
