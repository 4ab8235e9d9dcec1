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
    EXPECT_DOUBLE_EQ(*result.eventPrecision, 0.4);
    EXPECT_DOUBLE_EQ(*result.eventRecall, 0.5);
    EXPECT_DOUBLE_EQ(*result.f05, 1.25 * 0.4 * 0.5 / (0.25 * 0.4 + 0.5));
    EXPECT_DOUBLE_EQ(result.reaction->median, 5);  // of 5, 0 and 10
    EXPECT_DOUBLE_EQ(result.reaction->percentile90, 9);
    EXPECT_DOUBLE_EQ(result.lateRelease->median, 5);  // of 5, 10 and 0
    EXPECT_DOUBLE_EQ(result.lateRelease->percentile90, 9);
    EXPECT_DOUBLE_EQ(*result.falsePerHour, (106 - shared) * 3600 / (3600 - 110));
}

TEST(Evaluation, MatchesEachAdOnceAndCountsLatenessOnlyUpToTheNext) {
    // One found stretch over two ads: half of the union is shared with neither.
    auto result = evaluate({{0, 100}}, {{0, 40}, {60, 100}}, 200);
    EXPECT_DOUBLE_EQ(*result.eventRecall, 0);
    EXPECT_DOUBLE_EQ(result.lateRelease->median, 10);  // 20 between the two, 0 after the second
    // Exactly half is a match; the second half of the same ad is not matched again.
    result = evaluate({{0, 50}, {50, 100}}, {{0, 100}}, 200);
    EXPECT_DOUBLE_EQ(*result.eventPrecision, 0.5);
    EXPECT_DOUBLE_EQ(*result.eventRecall, 1);
}

TEST(Evaluation, LeavesOutFiguresWithoutAnythingToMeasure) {
    auto result = evaluate({}, {}, 100);
    EXPECT_FALSE(result.precision || result.recall || result.eventPrecision || result.eventRecall ||
                 result.f05);
    EXPECT_FALSE(result.reaction || result.lateRelease);
    EXPECT_EQ(result.falsePerHour, 0);
    result = evaluate({}, {{10, 20}, {95, 300}, {150, 160}}, 100);
    EXPECT_FALSE(result.precision || result.reaction);
    EXPECT_EQ(result.recall, 0);
    EXPECT_EQ(result.f05, 0);
    result = evaluate({{95, 100}}, {{90, 300}, {150, 160}}, 100);
    EXPECT_DOUBLE_EQ(*result.recall, 0.5) << "what lies beyond the recording does not count";
    EXPECT_DOUBLE_EQ(*result.eventRecall, 1);
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
