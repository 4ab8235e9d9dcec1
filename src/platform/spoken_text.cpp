// SPDX-License-Identifier: MIT
#include "platform/spoken_text.h"

#include "detection/keyword_transcript_scorer.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <string_view>
#include <utility>

namespace sordin {

namespace {

constexpr std::string_view unclear = "…";

constexpr std::array<std::string_view, 11> digits{"zero", "oh",  "one",   "two",   "three", "four",
                                                  "five", "six", "seven", "eight", "nine"};

// Of all words that were spoken over music, hardly any was longer.
constexpr double longestWord = 0.5;  // seconds
constexpr double longerForEachLetter = 0.1;

// Evidence for a phrase, in the unit of the acoustic match, and the sum that a phrase needs. The factors
// are rounded from a logistic regression over phrases that were spoken and phrases that were not
// (docs/speech.md).
constexpr double evidenceOfALetter = 0.35;  // of the phrase, including spaces
constexpr double evidenceOfAnotherPhrase = 1.5;
// In foreign languages, singing and noise, the decoder finds mostly short words.
constexpr double evidenceOfLongWords = 2;  // per letter of the other words' mean length above the usual
constexpr double usualLetters = 4;
constexpr double additionalWords = 10;  // of the usual length, for a steadier mean of few words
constexpr double leastEvidence = -0.5;

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

/// Number of the words without "…", and of their letters.
struct Length {
    explicit Length(std::span<const HeardWord> words) {
        for (const HeardWord& word : words) {
            if (word.word != unclear) {
                letters += static_cast<double>(word.word.size());
                ++count;
            }
        }
    }
    double letters = 0;
    double count = 0;
};

/// Mean match of words, weighted by their durations; the lowest number for words without duration.
double matchOf(std::span<const HeardWord> words) {
    double length = 0;
    double match = 0;
    for (const HeardWord& word : words) {
        length += word.length;
        match += word.length * word.match;
    }
    return length > 0 ? match / length : std::numeric_limits<double>::lowest();
}

/// Evidence for a phrase from the other words of the session.
double evidenceOfOthers(const Length& session, const Length& phrase, bool anotherPhrase) {
    const double count = session.count - phrase.count + additionalWords;
    const double letters = session.letters - phrase.letters + additionalWords * usualLetters;
    return evidenceOfLongWords * (letters / count - usualLetters) +
           (anotherPhrase ? evidenceOfAnotherPhrase : 0);
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
    const Length session(words);
    const bool several = KeywordTranscriptScorer::phrasesIn(line.text).size() > 1;
    std::vector<bool> doubtful(words.size());
    for (const auto& phrase : KeywordTranscriptScorer::phrases()) {
        for (std::size_t at = line.text.find(phrase.text); at != std::string::npos;
             at = line.text.find(phrase.text, at + 1)) {
            const std::size_t first = line.wordAt(at);
            const std::size_t end = line.wordAt(at + phrase.text.size() - 1) + 1;
            const auto spoken = std::span(std::as_const(words)).subspan(first, end - first);
            const double evidence = matchOf(spoken) +
                                    evidenceOfALetter * static_cast<double>(phrase.text.size()) +
                                    evidenceOfOthers(session, Length(spoken), several);
            if (evidence < leastEvidence) {
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
