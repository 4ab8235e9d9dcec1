// SPDX-License-Identifier: MIT
#include "platform/spoken_text.h"

#include <gtest/gtest.h>

#include <sstream>

namespace sordin {
namespace {

/// Words of ordinary length that fit the sounds with this match.
std::vector<HeardWord> words(const std::string& text, double match = -1) {
    std::vector<HeardWord> words;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) {
        words.push_back({word, 0.08 * static_cast<double>(word.size()), match});
    }
    return words;
}

TEST(SpokenText, WritesTollFreeNumbersAsTheyAreWritten) {
    const auto written = [](const std::string& text) { return spokenText(words(text)); };
    EXPECT_EQ(written("so call one eight hundred now"), "so call 1 eight hundred now");
    EXPECT_EQ(written("call one nine call one one two"), "call 1 nine call 1 one two");
    EXPECT_EQ(written("call one"), "call one") << "the next word is unknown";
    EXPECT_EQ(written("call one of them or recall one eight"), "call one of them or recall one eight");
    EXPECT_EQ(written("one eight hundred"), "one eight hundred");
    EXPECT_EQ(written("fifty percent off at acme dot com"), "fifty percent off at acme dot com");
    EXPECT_EQ(written(""), "");
}

TEST(SpokenText, LeavesOutWhatNobodySpeaksSoLong) {
    auto heard = words("and good dot com advertisement today");
    heard[1].length = 3.4;
    heard[4].length = 4.9;
    EXPECT_EQ(spokenText(heard), "and … dot com … today");
    heard[0].length = 1;
    EXPECT_EQ(spokenText(heard), "… dot com … today") << "one ellipsis for several words";
    heard[4].length = 1.7;
    EXPECT_EQ(spokenText(heard), "… dot com advertisement today") << "slow, but possible";
    auto parted = words("dot mm com");
    parted[1].length = 2;
    EXPECT_EQ(spokenText(parted), "dot … com") << "separate words stay separate";
}

TEST(SpokenText, PhrasesNeedEvidence) {
    struct Case {
        std::string text;
        double match;  // of all words
        std::string expected;
    };
    const std::string two = "and use code now or download the app";
    for (const auto& [text, match, expected] : std::vector<Case>{
             {two, -4.5, two},
             {two, -4.6, "and … now or download the app"},  // the shorter phrase needs a better match
             {two, -7, "and … now or …"},
             {"we should use code now", -3.1, "we should use code now"},
             {"we should use code now", -3.2, "we should … now"},  // no other phrase
             {"is a it to in of use code", -3.1, "is a it to in of …"},
             {"governments everywhere use code", -5, "governments everywhere use code"},
             {"visiting", -2.2, "visiting"},
             {"visiting", -2.3, "…"},  // a phrase inside a word needs evidence, too
             {"we walked along the river", -8, "we walked along the river"},
         }) {
        EXPECT_EQ(spokenText(words(text, match)), expected) << match;
    }

    auto mixed = words("use code");
    mixed[0].match = -9;  // three letters, against the four of the other word
    EXPECT_EQ(spokenText(mixed), "…");
    mixed[0].match = -5;
    EXPECT_EQ(spokenText(mixed), "use code");
    mixed[0].length = mixed[1].length = 0;
    EXPECT_EQ(spokenText(mixed), "…") << "words without duration have no evidence";

    // A word that is too long to be spoken counts neither as a phrase nor as a long word.
    auto stretched = words("we should use code advertisement", -3.5);
    EXPECT_EQ(spokenText(stretched), "we should use code advertisement");
    stretched.back().length = 5;
    EXPECT_EQ(spokenText(stretched), "we should …");
}

}  // namespace
}  // namespace sordin
