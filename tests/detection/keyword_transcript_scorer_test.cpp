// SPDX-License-Identifier: MIT
#include "detection/keyword_transcript_scorer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>

namespace sordin {
namespace {

float score(const std::string& text) {
    return KeywordTranscriptScorer().score(text);
}

TEST(KeywordTranscriptScorer, AddsUpPhrasesOnceEachUpToTheCap) {
    EXPECT_EQ(score(""), 0);
    EXPECT_EQ(score("the garden hour"), 0);
    EXPECT_FLOAT_EQ(score("This episode is SPONSORED BY our friends"), 1.0F / 1.2F);
    EXPECT_FLOAT_EQ(score("sponsored by them, sponsored by us"), 1.0F / 1.2F);
    EXPECT_FLOAT_EQ(score("use code garden at example.com"), 1);
    EXPECT_FLOAT_EQ(score("call now on call 1 800"), 1);
    EXPECT_FLOAT_EQ(score("subscribe, it is available now"), 0.6F / 1.2F);
}

TEST(KeywordTranscriptScorer, FindsPhrasesInsideWordsAndInEitherCase) {
    EXPECT_FLOAT_EQ(score("visiting"), 0.25F);
    EXPECT_FLOAT_EQ(score("Revisited"), 0.25F);
    EXPECT_FLOAT_EQ(score("don't miss"), 0.25F);
    EXPECT_EQ(score("don\xE2\x80\x99t miss"), 0) << "the typographic apostrophe is another character";
    EXPECT_FLOAT_EQ(score("ris\xE2\x84\xAA free"), 0.5F) << "the Kelvin sign lower-cases to k";
    EXPECT_EQ(score("v\xC4\xB0sit"), 0) << "capital dotted i lower-cases to i and a combining dot";
    EXPECT_FLOAT_EQ(score("\xC3\x9C"
                          "bersetzt: \xFF visit"),
                    0.25F)
        << "other bytes are ignored, even invalid ones";
}

TEST(KeywordTranscriptScorer, TableHoldsThePhrasesThatRecognisersAreTunedTo) {
    // FNV-1a hash over "phrase=tenths;" of all phrases in order. It detects every change of the table.
    std::uint64_t hash = 14695981039346656037U;
    for (const auto& [text, weight] : KeywordTranscriptScorer::phrases()) {
        EXPECT_GE(score(std::string(text)), weight / 1.2F - 1e-6F) << text;
        for (const char c : std::string(text) + "=" + std::to_string(std::lround(weight * 10)) + ";") {
            hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
        }
    }
    EXPECT_EQ(hash, 0x34c3ae0bc6c9eeeU);
}

}  // namespace
}  // namespace sordin
