// SPDX-License-Identifier: MIT
// The hops never depend on how the stream is cut into buffers.
#include "detection/stream_run.h"
#include "random_seed.h"

#include <gtest/gtest.h>

namespace sordin {
namespace {

class StreamMaker {
public:
    explicit StreamMaker(std::mt19937& random) : random_(random) {}

    /// About a minute in formats that change in mid-hop, with quiet and silent stretches.
    std::vector<Segment> stream() {
        std::vector<Segment> result;
        const std::vector<double> rates{16'000, 48'000, 8'000, 44'100, 11'025, 16'000, 48'000, 8'000};
        for (const double rate : rates) {
            const auto channels = static_cast<std::uint32_t>(uniform(1, 2));
            result.push_back(segment({rate, channels}, 3 + 0.001 * uniform(0, 9'000)));
        }
        return result;
    }

    /// From a single frame to 5 s, small sizes as likely as large ones.
    std::size_t cut(double rate) {
        const double most = std::log(5 * rate);
        return static_cast<std::size_t>(std::exp(most * 0.0001 * uniform(0, 10'000)));
    }

private:
    Segment segment(AudioFormat format, double seconds) {
        const auto frames = static_cast<std::size_t>(seconds * format.sampleRate);
        Segment result{format, {}, uniform(0, 5) == 0, uniform(0, 5) == 0};
        for (std::uint32_t channel = 0; channel < format.channelCount; ++channel) {
            std::vector<float> samples(frames);
            float level = 0;
            for (std::size_t i = 0; i < frames; ++i) {
                if (i % 5'000 == 0) {
                    level = uniform(0, 4) == 0 ? 0.0F : 0.0002F * static_cast<float>(uniform(1, 1'000));
                }
                samples[i] = level * (static_cast<float>(uniform(0, 2'000)) * 0.001F - 1);
            }
            result.channels.push_back(std::move(samples));
        }
        return result;
    }

    int uniform(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }

    std::mt19937& random_;
};

TEST(PipelineCuts, NeverChangeTheResult) {
    auto random = seededRandom();
    StreamMaker maker(random);
    const auto stream = maker.stream();
    const auto inOne = StreamRun::play(stream, [](double) { return std::size_t{1} << 40; });
    EXPECT_GT(std::count(inOne.begin(), inOne.end(), '\n'), 60);
    EXPECT_NE(inOne.find(" e"), std::string::npos) << "the stream should hold an ad";
    for (int round = 0; round < 6; ++round) {
        const auto cut = StreamRun::play(stream, [&](double rate) { return maker.cut(rate); });
        ASSERT_EQ(firstDifference(cut, inOne), "") << round;
    }
    const auto singleFrames = StreamRun::play({stream[2]}, [](double) { return std::size_t{1}; });
    const auto fiveSeconds =
        StreamRun::play({stream[2]}, [](double rate) { return static_cast<std::size_t>(5 * rate); });
    EXPECT_EQ(firstDifference(singleFrames, fiveSeconds), "");
}

}  // namespace
}  // namespace sordin
