// SPDX-License-Identifier: MIT
#include "platform/spoken_text.h"

#include "detection/keyword_transcript_scorer.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace sordin {

namespace {

constexpr std::string_view unclear = "…";

constexpr std::array<std::string_view, 11> digits{"zero", "oh",  "one",   "two",   "three", "four",
                                                  "five", "six", "seven", "eight", "nine"};

// Of all words that were spoken over music, hardly any was longer.
constexpr double longestWord = 0.5;  // seconds
constexpr double longerForEachLetter = 0.1;

// How docs/speech.md finds them: 19 of 20 phrases that were spoken have enough evidence, one of three that
// were not. What would count for more in the detector needs more.
constexpr double evidenceOfALetter = 0.27;  // of the phrase, spaces too
constexpr double leastEvidence = -3.1;
constexpr double moreForItsWeight = 1.4;

void writeTollFreeNumbers(std::vector<HeardWord>& words) {
    for (std::size_t i = 1; i + 1 < words.size(); ++i) {
        if (words[i].word == "one" && words[i - 1].word == "call" &&
            std::find(digits.begin(), digits.end(), words[i + 1].word) != digits.end()) {
            words[i].word = "1";
        }
    }
}

bool tooLong(const HeardWord& word) {
    return word.length > longestWord + longerForEachLetter * static_cast<double>(word.word.size());
}

bool evident(const KeywordTranscriptScorer::Phrase& phrase, std::span<const HeardWord> words) {
    double length = 0;
    double match = 0;
    for (const HeardWord& word : words) {
        length += word.length;
        match += word.length * word.match;
    }
    return length > 0 && match / length + evidenceOfALetter * static_cast<double>(phrase.text.size()) >=
                             leastEvidence + moreForItsWeight * static_cast<double>(phrase.weight);
}

/// Words with single spaces between them, and where each begins.
struct Line {
    explicit Line(std::span<const HeardWord> words) {
        for (const HeardWord& word : words) {
            starts.push_back(text.size());
            text += word.word;
            text += ' ';
        }
    }
    /// Number of the word that a place is in.
    [[nodiscard]] std::size_t wordAt(std::size_t place) const {
        return static_cast<std::size_t>(std::upper_bound(starts.begin(), starts.end(), place) -
                                        starts.begin()) -
               1;
    }

    std::string text;
    std::vector<std::size_t> starts;
};

}  // namespace

std::string spokenText(std::vector<HeardWord> words) {
    writeTollFreeNumbers(words);
    for (HeardWord& word : words) {
        if (tooLong(word)) {
            word.word = unclear;
        }
    }
    const Line line(words);
    std::vector<bool> doubtful(words.size());
    for (const auto& phrase : KeywordTranscriptScorer::phrases()) {
        for (std::size_t at = line.text.find(phrase.text); at != std::string::npos;
             at = line.text.find(phrase.text, at + 1)) {
            const std::size_t first = line.wordAt(at);
            const std::size_t end = line.wordAt(at + phrase.text.size() - 1) + 1;
            if (!evident(phrase, std::span(words).subspan(first, end - first))) {
                std::fill(doubtful.begin() + static_cast<std::ptrdiff_t>(first),
                          doubtful.begin() + static_cast<std::ptrdiff_t>(end), true);
            }
        }
    }
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = doubtful[i] ? unclear : std::string_view(words[i].word);
        if (word == unclear && text.ends_with(unclear)) {
            continue;
        }
        text += text.empty() ? "" : " ";
        text += word;
    }
    return text;
}

}  // namespace sordin
