// SPDX-License-Identifier: MIT
#include "replay/evaluation.h"
#include "replay/report.h"

#include <gtest/gtest.h>

#include <cmath>

namespace sordin::replay {
namespace {

TEST(Evaluation, MeasuresAnHourByHandAndWeighsPrecisionDoubleInF05) {
    // Real: 100-130, 200-230, 300-330, 1000-1020. Found: 105-135 (late by 5 at both ends), 190-240 (early and
    // late by 10: 30 of 50 shared), 310-316 (6 of 30), 2000-2010 and 3000-3010 (false). The last real one is
    // missed.
    const auto result = evaluate({{105, 135}, {190, 240}, {310, 316}, {2000, 2010}, {3000, 3010}},
                                 {{100, 130}, {200, 230}, {300, 330}, {1000, 1020}}, 3600);
    const double shared = 25 + 30 + 6;
    EXPECT_DOUBLE_EQ(*result.precision, shared / (30 + 50 + 6 + 10 + 10));
    EXPECT_DOUBLE_EQ(*result.recall, shared / (30 + 30 + 30 + 20));
    // No two are near enough to be one break.
    for (const EventFigures& events : {result.ads, result.breaks}) {
        EXPECT_DOUBLE_EQ(*events.precision, 0.4);
        EXPECT_DOUBLE_EQ(*events.recall, 0.5);
        EXPECT_DOUBLE_EQ(*events.f05, 1.25 * 0.4 * 0.5 / (0.25 * 0.4 + 0.5));
        EXPECT_DOUBLE_EQ(events.reaction->median, 5);  // of 5, 0 and 10
        EXPECT_DOUBLE_EQ(events.reaction->percentile90, 9);
        EXPECT_DOUBLE_EQ(events.lateRelease->median, 5);  // of 5, 10 and 0
        EXPECT_DOUBLE_EQ(events.lateRelease->percentile90, 9);
    }
    EXPECT_DOUBLE_EQ(*result.falsePerHour, (106 - shared) * 3600 / (3600 - 110));
}

TEST(Evaluation, MatchesEachAdOnceAndCountsLatenessOnlyUpToTheNext) {
    // One found stretch over two ads: half of the union is shared with neither.
    auto result = evaluate({{0, 100}}, {{0, 40}, {60, 100}}, 200);
    EXPECT_DOUBLE_EQ(*result.ads.recall, 0);
    EXPECT_DOUBLE_EQ(result.ads.lateRelease->median, 10);  // 20 between the two, 0 after the second
    // Exactly half is a match; the second half of the same ad is not matched again.
    result = evaluate({{0, 50}, {50, 100}}, {{0, 100}}, 200);
    EXPECT_DOUBLE_EQ(*result.ads.precision, 0.5);
    EXPECT_DOUBLE_EQ(*result.ads.recall, 1);
}

TEST(Evaluation, TakesAdsLessThanThreeSecondsApartForOneBreak) {
    // Gaps of 2.5 and 3 s: two breaks, of which the first was found as a whole, 4 s late.
    const auto result = evaluate({{4, 81}}, {{0, 20}, {22.5, 50}, {50, 80}, {83, 110}}, 200);
    EXPECT_DOUBLE_EQ(*result.breaks.precision, 1);
    EXPECT_DOUBLE_EQ(*result.breaks.recall, 0.5);
    EXPECT_DOUBLE_EQ(result.breaks.reaction->percentile90, 4);
    EXPECT_DOUBLE_EQ(result.breaks.lateRelease->percentile90, 1);
    EXPECT_DOUBLE_EQ(*result.ads.precision, 0);
    EXPECT_DOUBLE_EQ(result.ads.reaction->median, 0);
    EXPECT_DOUBLE_EQ(*result.recall, (16 + 27.5 + 30) / (20 + 27.5 + 30 + 27))
        << "in seconds they stay apart";
}

TEST(Evaluation, LeavesOutFiguresWithoutAnythingToMeasure) {
    auto result = evaluate({}, {}, 100);
    EXPECT_FALSE(result.precision || result.recall);
    for (const EventFigures& events : {result.ads, result.breaks}) {
        EXPECT_FALSE(events.precision || events.recall || events.f05 || events.reaction ||
                     events.lateRelease);
    }
    EXPECT_EQ(result.falsePerHour, 0);
    result = evaluate({}, {{10, 20}, {95, 300}, {150, 160}}, 100);
    EXPECT_FALSE(result.precision || result.breaks.reaction);
    EXPECT_EQ(result.recall, 0);
    EXPECT_EQ(result.breaks.f05, 0);
    result = evaluate({{95, 100}}, {{90, 300}, {150, 160}}, 100);
    EXPECT_DOUBLE_EQ(*result.recall, 0.5) << "what lies beyond the recording does not count";
    EXPECT_DOUBLE_EQ(*result.breaks.recall, 1);
    EXPECT_FALSE(evaluate({{0, 100}}, {{0, 100}}, 100).falsePerHour) << "no programme at all";
}

TEST(HopJson, GivesEveryFloatBackFromItsShortestDecimal) {
    DetectionPipeline::HopObservation hop{};
    for (const float value : {0.575F, 0.1F, std::nextafter(0.1F, 1.0F), 1.0F / 3, 8.5899346e9F}) {
        hop.signals.music = value;
        const auto printed = hopJson({0, hop, {}}, false);
        EXPECT_EQ(static_cast<float>(printed["music"].get<double>()), value);
    }
    hop.signals.music = 0.575F;
    EXPECT_EQ(hopJson({0, hop, {}}, false)["music"].dump(), "0.575");
}

}  // namespace
}  // namespace sordin::replay
