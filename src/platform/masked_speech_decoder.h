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
/// ms) later.
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
    const std::unique_ptr<SpeechDecoder> decoder_;
    const std::size_t window_;  // samples
    SpeechMask mask_;
    bool hearing_ = false;
    std::vector<float> input_;
    std::vector<float> cleaned_;
    std::vector<std::int16_t> integers_;
};

}  // namespace sordin
