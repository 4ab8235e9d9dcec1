// SPDX-License-Identifier: MIT
#include "replay/evaluation.h"
#include "replay/report.h"

#include <gtest/gtest.h>

#include <cmath>

namespace sordin::replay {
namespace {

TEST(Evaluation, MeasuresAnHourByHandAndWeighsPrecisionDoubleInF05) {
    // Real: 100-130, 200-230, 300-330, 1000-1020. Found: 105-135 (5 s late at both ends), 190-240 (10 s early
    // and late: 30 of 50 s shared), 310-316 (6 of 30 s), 2000-2010, 3000-3010 (false). The last real ad is
    // missed.
    const auto result = evaluate({{105, 135}, {190, 240}, {310, 316}, {2000, 2010}, {3000, 3010}},
                                 {{100, 130}, {200, 230}, {300, 330}, {1000, 1020}}, 3600);
    const double shared = 25 + 30 + 6;
    EXPECT_DOUBLE_EQ(*result.precision, shared / (30 + 50 + 6 + 10 + 10));
    EXPECT_DOUBLE_EQ(*result.recall, shared / (30 + 30 + 30 + 20));
    // All ads are too far apart to form a break.
    for (const EventFigures& events : {result.ads, result.breaks}) {
        EXPECT_DOUBLE_EQ(*events.precision, 0.4);
        EXPECT_DOUBLE_EQ(*events.recall, 0.5);
        EXPECT_DOUBLE_EQ(*events.f05, 1.25 * 0.4 * 0.5 / (0.25 * 0.4 + 0.5));
        EXPECT_DOUBLE_EQ(events.reaction->median, 5);  // median of 5, 0 and 10
        EXPECT_DOUBLE_EQ(events.reaction->percentile90, 9);
        EXPECT_DOUBLE_EQ(events.lateRelease->median, 5);  // median of 5, 10 and 0
        EXPECT_DOUBLE_EQ(events.lateRelease->percentile90, 9);
    }
    EXPECT_DOUBLE_EQ(*result.falsePerHour, (106 - shared) * 3600 / (3600 - 110));
}

TEST(Evaluation, MatchesEachAdOnceAndCountsLatenessOnlyUpToTheNext) {
    // One interval over two ads shares half of the union with neither.
    auto result = evaluate({{0, 100}}, {{0, 40}, {60, 100}}, 200);
    EXPECT_DOUBLE_EQ(*result.ads.recall, 0);
    EXPECT_DOUBLE_EQ(result.ads.lateRelease->median, 10);  // 20 between the two, 0 after the second
    // Exactly half is a match. The second half of the same ad is not matched again.
    result = evaluate({{0, 50}, {50, 100}}, {{0, 100}}, 200);
    EXPECT_DOUBLE_EQ(*result.ads.precision, 0.5);
    EXPECT_DOUBLE_EQ(*result.ads.recall, 1);
}

TEST(Evaluation, TakesAdsLessThanThreeSecondsApartForOneBreak) {
    // Gaps of 2.5 and 3 s make two breaks. The first was found as a whole, 4 s late.
    const auto result = evaluate({{4, 81}}, {{0, 20}, {22.5, 50}, {50, 80}, {83, 110}}, 200);
    EXPECT_DOUBLE_EQ(*result.breaks.precision, 1);
    EXPECT_DOUBLE_EQ(*result.breaks.recall, 0.5);
    EXPECT_DOUBLE_EQ(result.breaks.reaction->percentile90, 4);
    EXPECT_DOUBLE_EQ(result.breaks.lateRelease->percentile90, 1);
    EXPECT_DOUBLE_EQ(*result.ads.precision, 0);
    EXPECT_DOUBLE_EQ(result.ads.reaction->median, 0);
    EXPECT_DOUBLE_EQ(*result.recall, (16 + 27.5 + 30) / (20 + 27.5 + 30 + 27))
        << "figures in seconds do not join ads";
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
    EXPECT_DOUBLE_EQ(*result.recall, 0.5) << "labels beyond the recording do not count";
    EXPECT_DOUBLE_EQ(*result.breaks.recall, 1);
    EXPECT_FALSE(evaluate({{0, 100}}, {{0, 100}}, 100).falsePerHour) << "there is no programme";
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
