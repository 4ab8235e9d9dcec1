// SPDX-License-Identifier: MIT
#include "detection/captured_audio.h"
#include "detection/sample_math.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace sordin {
namespace {

using testing::ElementsAre;

template <class Sample>
CapturedAudio captured(StreamDescription description, std::int64_t frames,
                       const std::vector<Sample>& samples) {
    CapturedAudio audio{description, frames, std::vector<std::byte>(samples.size() * sizeof(Sample))};
    std::memcpy(audio.bytes.data(), samples.data(), audio.bytes.size());
    return audio;
}

/// The samples of a buffer of two frames, channel by channel.
template <class Sample>
std::vector<std::vector<float>> channels(StreamDescription description, const std::vector<Sample>& samples) {
    const auto buffer = pcmBuffer(captured(description, 2, samples)).value();
    EXPECT_EQ(buffer.format(), (AudioFormat{description.sampleRate, description.channelCount}));
    EXPECT_TRUE(buffer.channel(description.channelCount).empty());
    std::vector<std::vector<float>> result;
    for (std::uint32_t i = 0; i < description.channelCount; ++i) {
        result.emplace_back(buffer.channel(i).begin(), buffer.channel(i).end());
    }
    return result;
}

TEST(CapturedAudio, ReadsEverySampleTypeInBothLayouts) {
    const std::vector<std::int16_t> shorts{0, 16384, -32768, 32767};
    constexpr float highest = 32767.0F / 32768;
    EXPECT_THAT(channels({16'000, 2, SampleType::int16, true}, shorts),
                ElementsAre(ElementsAre(0, -1), ElementsAre(0.5F, highest)));
    EXPECT_THAT(channels({16'000, 2, SampleType::int16, false}, shorts),
                ElementsAre(ElementsAre(0, 0.5F), ElementsAre(-1, highest)));
    const std::vector<std::int32_t> ints{std::numeric_limits<std::int32_t>::min(), 1 << 30, 77};
    EXPECT_THAT(channels({48'000, 1, SampleType::int32, true}, ints), ElementsAre(ElementsAre(-1, 0.5F)))
        << "one frame more than declared";
    const std::vector<float> floats{0.25F, -1.5F, 1, 2, 3, 4};
    EXPECT_THAT(channels({44'100, 3, SampleType::float32, true}, floats)[1], ElementsAre(-1.5F, 3));
    EXPECT_THAT(channels({44'100, 3, SampleType::float32, false}, floats)[1], ElementsAre(1, 2));
}

TEST(CapturedAudio, AnswersNothingForWhatCannotBeRead) {
    const std::vector<float> floats(100);
    const StreamDescription good{16'000, 1, SampleType::float32, true};
    EXPECT_TRUE(pcmBuffer(captured(good, 100, floats)));
    EXPECT_FALSE(pcmBuffer(captured(good, 101, floats)));
    EXPECT_FALSE(pcmBuffer(captured(good, 0, floats)));
    for (const bool interleaved : {true, false}) {
        EXPECT_TRUE(pcmBuffer(captured({16'000, 2, SampleType::float32, interleaved}, 50, floats)));
        EXPECT_FALSE(pcmBuffer(captured({16'000, 2, SampleType::float32, interleaved}, 51, floats)));
    }
    EXPECT_FALSE(pcmBuffer(captured(good, std::numeric_limits<std::uint32_t>::max(), floats)));
    EXPECT_FALSE(pcmBuffer({std::nullopt, 100, std::vector<std::byte>(400)}));
    auto cut = captured(good, 100, floats);
    cut.bytes.pop_back();
    EXPECT_FALSE(pcmBuffer(cut));
    for (const double rate : {0.0, 999.9, 768'001.0, -16'000.0, std::nan(""), HUGE_VAL}) {
        EXPECT_FALSE(pcmBuffer(captured({rate, 1, SampleType::float32, true}, 100, floats))) << rate;
    }
    EXPECT_TRUE(pcmBuffer(captured({1'000, 1, SampleType::float32, true}, 100, floats)));
    EXPECT_TRUE(pcmBuffer(captured({768'000, 1, SampleType::float32, true}, 100, floats)));
    EXPECT_FALSE(pcmBuffer(captured({16'000, 0, SampleType::float32, true}, 100, floats)));
    EXPECT_FALSE(pcmBuffer(captured({16'000, 0xFFFFFFFF, SampleType::float32, false}, 0xFFFFFFFF, floats)));
    EXPECT_FALSE(pcmBuffer(captured({16'000, 1, SampleType::other, true}, 100, floats)));
}

TEST(CapturedAudio, AnImpossibleFrameCountEndsTheProcess) {
    const StreamDescription good{16'000, 1, SampleType::float32, true};
    EXPECT_DEATH(static_cast<void>(pcmBuffer({good, -1, {}})), "number of frames");
    EXPECT_DEATH(static_cast<void>(pcmBuffer({good, std::int64_t{1} << 32, {}})), "number of frames");
}

TEST(CapturedAudio, SamplesThatAreNoSoundBecomeSilence) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> damaged{0.5F, nan, infinity, -infinity, 1e30F, -1e30F, 30'000, -0.5F};
    const auto buffer = pcmBuffer(captured({16'000, 1, SampleType::float32, true}, 8, damaged));
    ASSERT_TRUE(buffer);
    EXPECT_THAT(buffer->channel(0), ElementsAre(0.5F, 0, 0, 0, 0, 0, 30'000, -0.5F));
}

TEST(SampleMath, RootMeanSquareTakesEverySampleOnce) {
    for (const std::size_t samples : {1U, 15U, 16U, 17U, 8000U}) {
        EXPECT_NEAR(rootMeanSquare(std::vector<float>(samples, 0.1F)), 0.1, 1e-6) << samples;
        for (const std::size_t at : {std::size_t{0}, samples / 2, samples - 1}) {
            std::vector<float> click(samples);
            click[at] = 2;
            EXPECT_NEAR(rootMeanSquare(click), 2 / std::sqrt(static_cast<double>(samples)), 1e-6) << samples;
        }
    }
    EXPECT_EQ(rootMeanSquare({}), 0);
}

}  // namespace
}  // namespace sordin
