// SPDX-License-Identifier: MIT
#include "platform/masked_speech_decoder.h"

#include "support/sample_conversion.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sordin {

namespace {

// Ratio of the energy that the mask passes to the energy that it removes, in dB. Synthetic voices alone have
// 25 to 35, at 15 dB over music 5 to 24.
constexpr float wholeMaskUpTo = 26;
constexpr float noMaskFrom = 32;
constexpr float memory = 0.8F;    // seconds in which an energy decays to 1/e
constexpr float silence = 1e-9F;  // added to both energies, so that silence has a ratio

}  // namespace

MaskedSpeechDecoder::MaskedSpeechDecoder(std::unique_ptr<SpeechDecoder> decoder, SpeechMaskModel mask)
    : decoder_(std::move(decoder)),
      window_(mask.window),
      kept_(std::exp(-0.5F * static_cast<float>(mask.window) / (memory * static_cast<float>(mask.rate)))),
      mask_(std::move(mask)),
      input_(window_ / 2) {}

void MaskedSpeechDecoder::begin() {
    decoder_->begin();
    mask_.reset();
    input_.assign(window_ / 2, 0.0F);
    energyPassed_ = energyRemoved_ = 0;
    hearing_ = true;
}

void MaskedSpeechDecoder::process(std::span<const std::int16_t> samples) {
    const std::size_t known = input_.size();
    input_.resize(known + samples.size());
    const auto fresh = std::span(input_).subspan(known);
    std::transform(samples.begin(), samples.end(), fresh.begin(), fromInteger);
    cleaned_.clear();
    mask_.process(fresh, cleaned_);
    bypassForCleanVoice();
    integers_.resize(cleaned_.size());
    std::transform(cleaned_.begin(), cleaned_.end(), integers_.begin(), toInteger);
    decoder_->process(integers_);
}

void MaskedSpeechDecoder::bypassForCleanVoice() {
    // The mask's output is half a window behind its input and comes in whole half windows.
    const std::size_t half = window_ / 2;
    for (std::size_t begin = 0; begin < cleaned_.size(); begin += half) {
        const auto cleaned = std::span(cleaned_).subspan(begin, half);
        const auto heard = std::span<const float>(input_).subspan(begin, half);
        float passed = 0;
        float removed = 0;
        for (std::size_t i = 0; i < half; ++i) {
            passed += cleaned[i] * cleaned[i];
            removed += (heard[i] - cleaned[i]) * (heard[i] - cleaned[i]);
        }
        energyPassed_ = kept_ * energyPassed_ + (1 - kept_) * passed;
        energyRemoved_ = kept_ * energyRemoved_ + (1 - kept_) * removed;
        const float ratio = 10 * std::log10((energyPassed_ + silence) / (energyRemoved_ + silence));
        const float share = std::clamp((noMaskFrom - ratio) / (noMaskFrom - wholeMaskUpTo), 0.0F, 1.0F);
        std::transform(heard.begin(), heard.end(), cleaned.begin(), cleaned.begin(),
                       [share](float whole, float masked) { return whole + share * (masked - whole); });
    }
    input_.erase(input_.begin(), input_.begin() + static_cast<std::ptrdiff_t>(cleaned_.size()));
}

void MaskedSpeechDecoder::end() {
    if (std::exchange(hearing_, false)) {
        process(std::vector<std::int16_t>(window_));  // what the mask still holds
    }
    decoder_->end();
}

}  // namespace sordin
