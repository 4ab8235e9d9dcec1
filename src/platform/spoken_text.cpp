// SPDX-License-Identifier: MIT
#include "platform/spoken_text.h"

#include <algorithm>
#include <array>

namespace sordin {

namespace {

constexpr std::array<std::string_view, 11> digits{"zero", "oh",  "one",   "two",   "three", "four",
                                                  "five", "six", "seven", "eight", "nine"};

/// The word at the beginning of a text.
std::string_view firstWord(std::string_view text) {
    return text.substr(0, text.find(' '));
}

bool endsWithWord(std::string_view text, std::string_view word) {
    return text.ends_with(word) && (text.size() == word.size() || text[text.size() - word.size() - 1] == ' ');
}

}  // namespace

std::string asWritten(std::string_view spoken) {
    constexpr std::string_view number = " one ";
    std::string written;
    std::size_t at = 0;
    while ((at = spoken.find(number)) != std::string_view::npos) {
        const std::string_view rest = spoken.substr(at + number.size());
        const bool tollFree = endsWithWord(spoken.substr(0, at), "call") &&
                              std::find(digits.begin(), digits.end(), firstWord(rest)) != digits.end();
        written += spoken.substr(0, at);
        written += tollFree ? " 1" : " one";
        spoken.remove_prefix(at + number.size() - 1);  // its last space may begin another
    }
    return written += spoken;
}

}  // namespace sordin
