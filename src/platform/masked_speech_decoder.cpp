// SPDX-License-Identifier: MIT
#include "platform/masked_speech_decoder.h"

#include "support/sample_conversion.h"

#include <algorithm>
#include <utility>

namespace sordin {

MaskedSpeechDecoder::MaskedSpeechDecoder(std::unique_ptr<SpeechDecoder> decoder, SpeechMaskModel mask)
    : decoder_(std::move(decoder)), window_(mask.window), mask_(std::move(mask)) {}

void MaskedSpeechDecoder::begin() {
    decoder_->begin();
    mask_.reset();
    hearing_ = true;
}

void MaskedSpeechDecoder::process(std::span<const std::int16_t> samples) {
    input_.resize(samples.size());
    std::transform(samples.begin(), samples.end(), input_.begin(), fromInteger);
    cleaned_.clear();
    mask_.process(input_, cleaned_);
    integers_.resize(cleaned_.size());
    std::transform(cleaned_.begin(), cleaned_.end(), integers_.begin(), toInteger);
    decoder_->process(integers_);
}

void MaskedSpeechDecoder::end() {
    if (std::exchange(hearing_, false)) {
        process(std::vector<std::int16_t>(window_));  // what the mask still holds
    }
    decoder_->end();
}

}  // namespace sordin
