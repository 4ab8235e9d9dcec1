// SPDX-License-Identifier: MIT
#include "detection/hop_buffer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <vector>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Cutter {
    HopBuffer buffer;
    float next = 0;

    /// Appends samples of a running count. Checks the contents of the resulting hops and returns their sizes.
    std::vector<std::size_t> append(std::size_t samples) {
        std::vector<float> audio(samples);
        for (float& sample : audio) {
            sample = next++;
        }
        std::vector<std::size_t> sizes;
        buffer.append(audio, [&](std::span<const float> hop) {
            sizes.push_back(hop.size());
            for (const float sample : hop) {
                EXPECT_EQ(sample, expected_++);
            }
        });
        return sizes;
    }

private:
    float expected_ = 0;
};

TEST(HopBuffer, CutsBackToBackHops) {
    Cutter cutter;
    EXPECT_THAT(cutter.append(6000), IsEmpty());
    EXPECT_THAT(cutter.append(12000), ElementsAre(8000, 8000));
    EXPECT_THAT(cutter.append(5999), IsEmpty());
    EXPECT_THAT(cutter.append(1), ElementsAre(8000));
}

TEST(HopBuffer, FollowsTheRateAndHandsOnWhatWaitsTooLong) {
    Cutter cutter;
    cutter.buffer.setSampleRate(48'000);
    EXPECT_THAT(cutter.append(20'000), IsEmpty());
    cutter.buffer.setSampleRate(8'000);
    EXPECT_THAT(cutter.append(4'100), ElementsAre(20'000, 4'000));
    cutter.buffer.setSampleRate(44'101);  // an odd rate: half of it is not an integer
    EXPECT_THAT(cutter.append(21'949), IsEmpty());
    EXPECT_THAT(cutter.append(1), ElementsAre(22'050));
    cutter.buffer.setSampleRate(2);
    EXPECT_THAT(cutter.append(2), ElementsAre(1, 1));
}

TEST(HopBuffer, RefusesRatesWithoutHops) {
    HopBuffer buffer;
    for (const double bad : {0.0, 1.9, -16'000.0, std::nan(""), HUGE_VAL, 1e30}) {
        EXPECT_DEATH(buffer.setSampleRate(bad), "sample rate") << bad;
    }
}

}  // namespace
}  // namespace sordin
