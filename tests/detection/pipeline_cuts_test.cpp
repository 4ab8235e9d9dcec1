// SPDX-License-Identifier: MIT
// The division of the stream into buffers must not affect the hops.
#include "detection/stream_run.h"
#include "random_seed.h"

#include <gtest/gtest.h>

namespace sordin {
namespace {

class PipelineCuts : public testing::Test {
protected:
    /// A few seconds with quiet and silent parts.
    Segment segment(double rate) {
        const auto frames = static_cast<std::size_t>((3 + 0.001 * uniform(0, 9'000)) * rate);
        Segment result{
            {rate, static_cast<std::uint32_t>(uniform(1, 2))}, {}, uniform(0, 5) == 0, uniform(0, 5) == 0};
        result.channels.assign(result.format.channelCount, std::vector<float>(frames));
        for (auto& samples : result.channels) {
            float level = 0;
            for (std::size_t i = 0; i < frames; ++i) {
                if (i % 5'000 == 0) {
                    level = uniform(0, 4) == 0 ? 0.0F : 0.0002F * static_cast<float>(uniform(1, 1'000));
                }
                samples[i] = level * (static_cast<float>(uniform(0, 2'000)) * 0.001F - 1);
            }
        }
        return result;
    }

    /// From a single frame to 5 s, with small and large sizes equally likely.
    std::size_t cut(double rate) {
        return static_cast<std::size_t>(std::exp(std::log(5 * rate) * 0.0001 * uniform(0, 10'000)));
    }

    int uniform(int low, int high) { return std::uniform_int_distribution(low, high)(random); }

    std::mt19937 random = seededRandom();
};

TEST_F(PipelineCuts, NeverChangeTheResult) {
    std::vector<Segment> stream;  // about a minute, with format changes inside hops
    for (const double rate : {16'000, 48'000, 8'000, 44'100, 11'025, 16'000, 48'000, 8'000}) {
        stream.push_back(segment(rate));
    }
    const auto inOne = StreamRun::play(stream, [](double) { return std::size_t{1} << 40; });
    EXPECT_GT(std::count(inOne.begin(), inOne.end(), '\n'), 60);
    EXPECT_NE(inOne.find(" e"), std::string::npos) << "the stream should contain an ad";
    for (int round = 0; round < 6; ++round) {
        const auto inPieces = StreamRun::play(stream, [&](double rate) { return cut(rate); });
        ASSERT_EQ(firstDifference(inPieces, inOne), "") << round;
    }
    const auto singleFrames = StreamRun::play({stream[2]}, [](double) { return std::size_t{1}; });
    const auto fiveSeconds =
        StreamRun::play({stream[2]}, [](double rate) { return static_cast<std::size_t>(5 * rate); });
    EXPECT_EQ(firstDifference(singleFrames, fiveSeconds), "");
}

}  // namespace
}  // namespace sordin
