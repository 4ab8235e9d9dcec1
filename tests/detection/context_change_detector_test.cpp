// SPDX-License-Identifier: MIT
#include "detection/context_change_detector.h"

#include <gtest/gtest.h>

namespace sordin {
namespace {

Bands level(float value) {
    Bands bands;
    bands.fill(value);
    return bands;
}

/// The score of the twelfth hop after six of `before` and six of `after`.
float scoreOfShift(const Bands& before, const Bands& after) {
    ContextChangeDetector change;
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(change.update(i < 6 ? before : after), 0);
    }
    return change.update(after);
}

TEST(ContextChangeDetector, ScoresTheShiftOfTheMeans) {
    EXPECT_EQ(scoreOfShift(level(-40), level(-40)), 0);
    EXPECT_EQ(scoreOfShift(level(0), level(2)), 0);
    EXPECT_FLOAT_EQ(scoreOfShift(level(0), level(6)), 0.5F);
    EXPECT_EQ(scoreOfShift(level(0), level(10)), 1);
    EXPECT_EQ(scoreOfShift(level(-100), level(0)), 1);
    EXPECT_FLOAT_EQ(scoreOfShift(level(0), {6, 6, 6, 6, -6, -6, -6, -6}), 0.5F)
        << "shifts of both signs add up";
    EXPECT_FLOAT_EQ(scoreOfShift(level(0), {0, 0, 0, 0, 0, 0, 0, 32}), 0.25F);
}

TEST(ContextChangeDetector, SlidesOverTheNewestTwelveHopsAndWarmsUpAgain) {
    ContextChangeDetector change;
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(change.update(level(0)), 0);
    }
    // The new level fills the newer half, then both: k of 6 hops shift the mean by 9 k / 6.
    const float expected[] = {0,    0.125F,  0.3125F, 0.5F, 0.6875F, 0.875F, 0.6875F,
                              0.5F, 0.3125F, 0.125F,  0,    0,       0};
    for (const float score : expected) {
        EXPECT_NEAR(change.update(level(9)), score, 1e-6);
    }
    change.clear();
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(change.update(level(i < 6 ? 0.0F : 60.0F)), 0);
    }
    EXPECT_EQ(change.update(level(60)), 1);
}

}  // namespace
}  // namespace sordin
