// SPDX-License-Identifier: MIT
#include "detection/ad_segmenter.h"

#include <gmock/gmock.h>

#include <limits>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr float threshold = 0.575F;

Contributions contributions(std::initializer_list<Contribution> entries) {
    Contributions result;
    for (const Contribution& entry : entries) {
        result.append(entry);
    }
    return result;
}

/// Feeds the confidences and returns one letter for each: S started, E ended, . nothing.
std::string steps(AdSegmenter& segmenter, std::initializer_list<float> confidences, float level = threshold) {
    std::string result;
    for (const float confidence : confidences) {
        const auto event = segmenter.update(confidence, level, 0.5, {});
        result += !event ? '.' : std::holds_alternative<AdSegmenter::Started>(*event) ? 'S' : 'E';
    }
    return result;
}

std::string stepsOutside(std::initializer_list<float> confidences) {
    AdSegmenter segmenter;
    return steps(segmenter, confidences);
}

AdSegmenter insideAd() {
    AdSegmenter segmenter;
    EXPECT_EQ(steps(segmenter, {0.8F, 0.8F}), ".S");
    return segmenter;
}

TEST(AdSegmenter, StartsAfterTwoStrongOrThreeHops) {
    EXPECT_EQ(stepsOutside({0.6F, 0.6F, 0.6F}), "..S");
    EXPECT_EQ(stepsOutside({0.6F, 0.8F}), ".S");
    EXPECT_EQ(stepsOutside({0.8F, 0.6F, 0.6F}), "..S");  // only the last hop's strength counts
    EXPECT_EQ(stepsOutside({0.8F, 0.5F, 0.8F, 0.8F}), "...S");
    EXPECT_EQ(stepsOutside({threshold, threshold, threshold}), "..S");
    EXPECT_EQ(stepsOutside({threshold, threshold + 0.2F}), ".S");
    EXPECT_EQ(stepsOutside({0.9F}), ".");
}

TEST(AdSegmenter, EndsAfterThreeSecondsClearlyBelow) {
    auto segmenter = insideAd();
    constexpr float exit = threshold - 0.15F;
    EXPECT_EQ(steps(segmenter, {exit, exit, exit, exit, exit, exit, exit, exit}), "........");
    EXPECT_EQ(steps(segmenter, {0.42F, 0.42F, 0.42F, 0.42F, 0.42F}), ".....");
    EXPECT_EQ(steps(segmenter, {0.5F, 0.42F, 0.42F, 0.42F, 0.42F, 0.42F, 0.42F}), "......E");
    EXPECT_FALSE(segmenter.inAd());
    EXPECT_EQ(steps(segmenter, {0.6F, 0.6F, 0.6F}), "..S") << "the count restarts after an ad";
    EXPECT_EQ(steps(segmenter, {0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0.1F}), ".....E")
        << "the hold time restarts, too";
}

TEST(AdSegmenter, FollowsOtherRulesAlsoInsideAnAd) {
    DetectorRules rules;
    rules.strongMargin = 0.1F;
    rules.strongRun = 1;
    rules.weakRun = 4;
    rules.exitMargin = 0.3F;
    rules.holdSeconds = 1;
    AdSegmenter segmenter;
    segmenter.setRules(rules);
    EXPECT_EQ(steps(segmenter, {0.6F, 0.6F, 0.6F, 0.6F}), "...S");
    EXPECT_EQ(steps(segmenter, {0.3F, 0.3F, 0.3F, 0.2F, 0.2F}), "....E");
    EXPECT_EQ(steps(segmenter, {0.7F, 0.2F}), "S.");
    segmenter.setRules(standardRules());
    EXPECT_EQ(steps(segmenter, {0.4F, 0.4F, 0.4F, 0.4F, 0.4F}), "....E") << "earlier low hops count";
}

TEST(AdSegmenter, EndsAtFourMinutesWhateverHappens) {
    auto segmenter = insideAd();
    for (int hop = 1; hop < 480; ++hop) {
        ASSERT_FALSE(segmenter.update(0.9F, threshold, 0.5, {})) << hop;
    }
    ASSERT_TRUE(segmenter.update(0.9F, threshold, 0.5, {}));
    EXPECT_EQ(segmenter.elapsed(), 240);
    EXPECT_EQ(steps(segmenter, {0.9F, 0.9F, 0.9F}), ".S.") << "the next ad may also last four minutes";
}

TEST(AdSegmenter, ReportsThePeakAndItsReasons) {
    AdSegmenter segmenter;
    const auto update = [&](float confidence, const Contributions& shares) {
        return segmenter.update(confidence, threshold, 0.5, shares);
    };
    EXPECT_FALSE(update(0.9F, contributions({{"Keywords", 0.8F}})));
    EXPECT_TRUE(update(0.8F, contributions({{"Timing", 0.25F}})));
    EXPECT_FALSE(update(0.85F, contributions({{"Audio", 0.55F},
                                              {"Keywords", 0},
                                              {"Boundary", 0.35F},
                                              {"Repetition", 0.16F},
                                              {"Timing", 0.15F},
                                              {"Loudness", 0.2F}})));
    EXPECT_FALSE(update(
        0.85F, contributions({{"Keywords", 0.8F}})));  // an equal peak does not replace the earlier one
    auto summary = segmenter.forceEnd();
    EXPECT_FLOAT_EQ(summary.peakConfidence, 0.85F);
    EXPECT_THAT(summary.reasons, ElementsAre("Audio", "Boundary", "Loudness"));
    EXPECT_FALSE(segmenter.inAd());

    static_cast<void>(update(0.8F, {}));
    static_cast<void>(update(0.8F, contributions({{"Audio", 0.15F}})));
    EXPECT_THAT(segmenter.forceEnd().reasons, IsEmpty());
    static_cast<void>(update(0.8F, {}));
    static_cast<void>(update(0.8F, contributions({{"Audio", 0.2F}, {"Boundary", 0.3F}, {"Timing", 0.2F}})));
    EXPECT_THAT(segmenter.forceEnd().reasons, ElementsAre("Boundary", "Audio", "Timing"));
}

TEST(AdSegmenter, ValuesThatAreNoNumbersNeverKeepTheVolumeDown) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(stepsOutside({nan, nan, nan, nan}), "....");
    AdSegmenter segmenter;
    EXPECT_EQ(steps(segmenter, {0.9F, 0.9F, 0.9F, 0.9F}, nan), "....");
    segmenter = insideAd();
    EXPECT_EQ(steps(segmenter, {nan, nan, nan, nan, nan, nan}), ".....E");
    segmenter = insideAd();
    EXPECT_EQ(steps(segmenter, {0.9F, 0.9F, 0.9F, 0.9F, 0.9F, 0.9F}, nan), ".....E");
    EXPECT_EQ(steps(segmenter, {1, 1, 1, 1}, 1.5F), "....");
}

}  // namespace
}  // namespace sordin
