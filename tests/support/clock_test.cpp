// SPDX-License-Identifier: MIT
#include "support/system_clock.h"

#include <gtest/gtest.h>

#include <chrono>

namespace sordin {
namespace {

TEST(SystemClock, StartsAtTheWallClockAndThenNeverHeedsItAgain) {
    double wall = 1.7e9;
    double elapsed = 500;
    const SystemClock clock([&] { return wall; }, [&] { return elapsed; });
    EXPECT_DOUBLE_EQ(clock.now(), 1.7e9);
    wall -= 3600;  // the system clock is set back
    elapsed += 12.25;
    EXPECT_DOUBLE_EQ(clock.now(), 1.7e9 + 12.25);
}

TEST(SystemClock, ReadsTheRealClocks) {
    const std::chrono::duration<double> wall = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_NEAR(SystemClock().now(), wall.count(), 60);
}

}  // namespace
}  // namespace sordin
