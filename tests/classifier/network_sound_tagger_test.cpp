// SPDX-License-Identifier: MIT
#include "classifier/model_files.h"
#include "classifier/network_sound_tagger.h"
#include "classifier/slow_sound_model.h"
#include "classifier/sound_model_file.h"
#include "random_seed.h"
#include "sounds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace sordin {
namespace {

using Results = std::vector<SlowSoundModel::Result>;

constexpr double rate = 4'000;
constexpr std::int64_t half = 2'000;

/// Noise with changing level and color.
std::vector<float> sound(std::mt19937& random, std::size_t samples) {
    std::normal_distribution<float> noise(0, 0.1F);
    std::vector<float> result(samples);
    float last = 0;
    for (std::size_t i = 0; i < samples; ++i) {
        const float colour = 0.9F * std::sin(static_cast<float>(i) / 1'100);
        last = colour * last + noise(random);
        result[i] = last * (1.1F + std::sin(static_cast<float>(i) / 3'700));
    }
    return result;
}

class NetworkSoundTaggerTest : public testing::Test {
protected:
    NetworkSoundTaggerTest() {
        tagger.onLabels([this](std::span<const SoundLabel> labels) {
            heard.push_back({end, {}});
            for (const SoundLabel& label : labels) {
                heard.back().confidences.push_back(label.confidence);
            }
        });
    }

    /// Prepares a stream of this format and clears the results.
    void begin(AudioFormat format = {rate, 1}) {
        EXPECT_EQ(tagger.prepare(format), std::nullopt);
        heard.clear();
    }

    void analyze(std::span<const float> samples, std::int64_t position, AudioFormat format = {rate, 1}) {
        end = position + static_cast<std::int64_t>(samples.size() / format.channelCount);
        tagger.analyze(PcmBuffer(format, {samples.begin(), samples.end()}), position);
    }

    /// Analyzes the samples in random pieces. Returns all results so far with the ends of their buffers.
    Results play(std::span<const float> samples, std::int64_t position = 0) {
        while (!samples.empty()) {
            const auto size = std::min<std::size_t>(
                samples.size(), std::uniform_int_distribution<std::size_t>(1, 900)(random));
            analyze(samples.first(size), position);
            samples = samples.subspan(size);
            position += static_cast<std::int64_t>(size);
        }
        return heard;
    }

    static void expectAlike(const Results& actual, const Results& expected, double tolerance = 2e-5) {
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < 3 * actual.size(); ++i) {
            EXPECT_NEAR(actual[i / 3].confidences[i % 3], expected[i / 3].confidences[i % 3], tolerance) << i;
        }
    }
    /// The results and their buffers must be equal.
    static void expectSame(const Results& actual, const Results& expected) {
        expectAlike(actual, expected);
        for (std::size_t i = 0; i < std::min(actual.size(), expected.size()); ++i) {
            EXPECT_GE(actual[i].position, expected[i].position) << i;
            EXPECT_LT(actual[i].position, expected[i].position + 900) << i;
        }
    }

    std::mt19937 random = seededRandom();
    const SoundModel model = smallModel(random);
    const SlowSoundModel slow{model};
    NetworkSoundTagger tagger{readSoundModel(fileOf(model), "small")};
    std::int64_t end = 0;
    Results heard;
};

TEST_F(NetworkSoundTaggerTest, ResultsAreThoseOfTheDefinition) {
    begin();
    const auto samples = sound(random, 22'345);
    const Results expected = slow.results(samples);
    ASSERT_EQ(expected.size(), 10U);
    expectSame(play(samples), expected);
    for (std::size_t label = 0; label < 3; ++label) {
        const auto [least, most] =
            std::minmax_element(expected.begin(), expected.end(), [&](const auto& a, const auto& b) {
                return a.confidences[label] < b.confidences[label];
            });
        EXPECT_GT(most->confidences[label] - least->confidences[label], 0.01)
            << "without variation the comparison proves little";
    }
}

TEST_F(NetworkSoundTaggerTest, AResultComesWithTheBufferThatEndsItsHop) {
    const auto samples = sound(random, 10'000);
    const std::span<const float> all(samples);
    begin();
    analyze(all.first(3'999), 0);
    EXPECT_TRUE(heard.empty()) << "less than a second has been analyzed";
    analyze(all.subspan(3'999, 1), 3'999);
    ASSERT_EQ(heard.size(), 1U);
    analyze(all.subspan(4'000, 4'100), 4'000);
    EXPECT_EQ(heard.size(), 3U) << "two hops in one buffer";

    // A stream that is prepared again counts hops from its first buffer.
    begin();
    analyze(all.first(4'000 - 1), 8'100);
    EXPECT_TRUE(heard.empty());
    analyze(all.subspan(3'999, 1), 8'100 + 3'999);
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_NEAR(heard[0].confidences[0], slow.results(samples)[0].confidences[0], 2e-5);
}

TEST_F(NetworkSoundTaggerTest, HopsOfTheFirstStreamCountFromItsStart) {
    begin();
    const auto samples = sound(random, 9'000);
    const auto expected = slow.results(samples, 3'123);
    ASSERT_EQ(expected.front().position, 8'000);
    expectSame(play(samples, 3'123), expected);

    begin();  // a later stream, which begins in silence: 3'123 frames that are not analyzed
    tagger.countHopsFrom(3 * half);
    expectAlike(play(samples, 3 * half + 3'123), expected);
}

// A result depends on three embeddings, each of 100 + 118 * 40 samples.
constexpr std::int64_t lookBack = 2 * half + 4'820;

TEST_F(NetworkSoundTaggerTest, ShortSilenceIsPutBack) {
    for (const std::int64_t gap : {std::int64_t{1}, std::int64_t{1'234}, lookBack - 1}) {
        begin();
        auto samples = sound(random, 24'000);
        std::fill_n(samples.begin() + 7'777, gap, 0.0F);
        const std::span<const float> all(samples);
        play(all.first(7'777));
        expectAlike(play(all.subspan(static_cast<std::size_t>(7'777 + gap)), 7'777 + gap),
                    slow.results(samples));
    }
}

TEST_F(NetworkSoundTaggerTest, BeginsAnewAfterALongSilenceAndWhereTheStreamGoesBack) {
    for (const std::int64_t next :
         {7'777 + lookBack, std::int64_t{1'000'000'007}, std::int64_t{7'776}, std::int64_t{0}}) {
        begin();
        analyze(std::vector<float>(1), 0);  // hops are counted from here
        play(sound(random, 7'776), 1);
        heard.clear();
        const auto samples = sound(random, 11'000);
        expectSame(play(samples, next), slow.results(samples, next));
    }
}

/// A sound that is the same at every rate: intermittent tones far below 2 kHz.
std::vector<float> tones(double sampleRate, double delay) {
    std::vector<float> samples(static_cast<std::size_t>(sampleRate * 6));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double t = static_cast<double>(i) / sampleRate - delay;
        double value = 0;
        for (const double frequency : {110.0, 290.0, 430.0, 770.0, 1'210.0}) {
            value += std::sin(2 * std::numbers::pi * frequency * t) * (1 + std::sin(frequency * t / 50));
        }
        samples[i] = t < 0 ? 0 : static_cast<float>(0.1 * value);
    }
    return samples;
}

TEST_F(NetworkSoundTaggerTest, HearsTheSameAtEveryRate) {
    begin();
    const Results expected = play(tones(rate, 0.01));
    ASSERT_EQ(expected.size(), 11U);
    for (const double other : {8'000.0, 11'025.0, 16'000.0, 44'100.0, 48'000.0, 96'000.0}) {
        // Channel 1 and everything above half the model's rate are ignored.
        auto samples = tones(other, 0);
        const auto high = sine(2'600, other, samples.size(), 0.1);
        std::transform(samples.begin(), samples.end(), high.begin(), samples.begin(), std::plus<>());
        const auto right = sound(random, samples.size());
        samples.insert(samples.end(), right.begin(), right.end());
        const AudioFormat stereo{other, 2};
        begin(stereo);
        analyze(samples, 0, stereo);
        SCOPED_TRACE(other);
        expectAlike(heard, expected, 0.01);
        const auto before = std::exchange(heard, {});
        analyze(samples, 0, stereo);
        expectAlike(heard, before, 0);  // no state remains from the first run
    }
}

// At an odd rate a hop is half a frame shorter than half a second.
TEST_F(NetworkSoundTaggerTest, StaysInStepWithTheHopsAtEveryRate) {
    for (const double other : {rate, 3'001.0, 44'100.0, 48'001.0}) {
        const AudioFormat format{other, 1};
        begin(format);
        const auto hop = static_cast<std::size_t>(other / 2);
        const auto samples = sound(random, hop);
        for (std::size_t i = 0; i < 60; ++i) {
            analyze(samples, static_cast<std::int64_t>(i * hop), format);
            ASSERT_EQ(heard.size(), i) << other;
        }
    }
}

TEST_F(NetworkSoundTaggerTest, KeepsItsStreamWhenAnotherCannotBe) {
    const auto samples = sound(random, 8'000);
    const std::span<const float> all(samples);
    analyze(all, 0);
    EXPECT_TRUE(heard.empty()) << "no stream was prepared";
    begin();
    analyze(all.first(5'000), 0);
    for (const AudioFormat& bad :
         {AudioFormat{0, 1}, {-1, 1}, {std::nan(""), 1}, {HUGE_VAL, 1}, {2, 1}, {1e12, 1}, {rate, 0}}) {
        EXPECT_NE(tagger.prepare(bad), std::nullopt) << bad.sampleRate;
    }
    analyze(all, 5'000, {rate, 2});  // not the prepared format
    analyze({}, 5'000);
    analyze(all.subspan(5'000), 5'000);
    const auto expected = slow.results(samples);
    ASSERT_EQ(heard.size(), expected.size());
    EXPECT_NEAR(heard.back().confidences[2], expected.back().confidences[2], 2e-5);
}

}  // namespace
}  // namespace sordin
