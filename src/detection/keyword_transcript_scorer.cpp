// SPDX-License-Identifier: MIT
#include "detection/keyword_transcript_scorer.h"

#include <algorithm>
#include <string>

namespace sordin {

namespace {

constexpr std::array<KeywordTranscriptScorer::Phrase, 36> phraseTable{{
    {"sponsored by", 1.0F},
    {"brought to you by", 1.0F},
    {"promo code", 1.0F},
    {"use code", 0.9F},
    {"limited time", 0.6F},
    {"call now", 0.8F},
    {"dot com", 0.6F},
    {".com", 0.5F},
    {"percent off", 0.7F},
    {"% off", 0.7F},
    {"free shipping", 0.7F},
    {"terms and conditions", 0.5F},
    {"restrictions apply", 0.6F},
    {"ask your doctor", 0.9F},
    {"side effects", 0.6F},
    {"act now", 0.7F},
    {"order now", 0.7F},
    {"download the app", 0.6F},
    {"try it free", 0.6F},
    {"special offer", 0.7F},
    {"save up to", 0.6F},
    {"your first month", 0.5F},
    {"advertisement", 0.8F},
    {"be right back", 0.6F},
    {"learn more at", 0.8F},
    {"get yours", 0.5F},
    {"only at", 0.3F},
    {"sign up", 0.3F},
    {"visit", 0.3F},
    {"subscribe", 0.2F},
    {"available now", 0.4F},
    {"starting at", 0.3F},
    {"don't miss", 0.3F},
    {"call 1", 0.5F},  // a spoken toll-free number ("call 1 800 ...")
    {"shop now", 0.7F},
    {"risk free", 0.6F},
}};

/// Lower-cases the letters that can matter for ASCII phrases. Outside ASCII, only two letters have lower-case
/// forms that contain ASCII: the Kelvin sign (U+212A) becomes k, and I with dot above (U+0130) becomes i with
/// a combining dot.
std::string lowerCased(std::string_view text) {
    constexpr std::string_view kelvinSign = "\xE2\x84\xAA";
    constexpr std::string_view dottedI = "\xC4\xB0";
    constexpr std::string_view loweredDottedI = "i\xCC\x87";
    std::string lowered;
    lowered.reserve(text.size());
    while (!text.empty()) {
        std::size_t taken = 1;
        if (text.starts_with(kelvinSign)) {
            lowered += 'k';
            taken = kelvinSign.size();
        } else if (text.starts_with(dottedI)) {
            lowered += loweredDottedI;
            taken = dottedI.size();
        } else {
            const char c = text.front();
            lowered += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
        text.remove_prefix(taken);
    }
    return lowered;
}

template <class Action>
void forEachPhraseIn(std::string_view text, Action action) {
    const std::string lowered = lowerCased(text);
    for (const auto& phrase : phraseTable) {
        if (lowered.find(phrase.text) != std::string::npos) {
            action(phrase);
        }
    }
}

}  // namespace

std::span<const KeywordTranscriptScorer::Phrase> KeywordTranscriptScorer::phrases() {
    return phraseTable;
}

std::vector<KeywordTranscriptScorer::Phrase> KeywordTranscriptScorer::phrasesIn(std::string_view text) {
    std::vector<Phrase> found;
    forEachPhraseIn(text, [&found](const Phrase& phrase) { found.push_back(phrase); });
    return found;
}

float KeywordTranscriptScorer::score(std::string_view text) const {
    float sum = 0;
    forEachPhraseIn(text, [&sum](const Phrase& phrase) { sum += phrase.weight; });
    return std::min(sum / 1.2F, 1.0F);
}

}  // namespace sordin
