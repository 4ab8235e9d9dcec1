// SPDX-License-Identifier: MIT
#include "classifier/model_files.h"
#include "classifier/network_sound_tagger.h"
#include "classifier/slow_sound_model.h"
#include "classifier/sound_model_file.h"
#include "random_seed.h"

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

/// Noise whose level and colour move.
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

    void analyze(std::span<const float> samples, std::int64_t position, AudioFormat format = {rate, 1}) {
        end = position + static_cast<std::int64_t>(samples.size() / format.channelCount);
        tagger.analyze(PcmBuffer(format, {samples.begin(), samples.end()}), position);
    }

    /// In pieces of any size; returns what was heard, each result with the end of its buffer.
    Results play(std::span<const float> samples, std::int64_t position = 0) {
        heard.clear();
        while (!samples.empty()) {
            const auto size = std::min<std::size_t>(
                samples.size(), std::uniform_int_distribution<std::size_t>(1, 900)(random));
            analyze(samples.first(size), position);
            samples = samples.subspan(size);
            position += static_cast<std::int64_t>(size);
        }
        return heard;
    }

    static void expectSame(const Results& actual, const Results& expected) {
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < actual.size(); ++i) {
            EXPECT_GE(actual[i].position, expected[i].position) << i;
            EXPECT_LT(actual[i].position, expected[i].position + 900) << i << ": with its buffer";
            for (std::size_t label = 0; label < 3; ++label) {
                EXPECT_NEAR(actual[i].confidences[label], expected[i].confidences[label], 2e-5)
                    << i << ", label " << label;
            }
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
    ASSERT_EQ(tagger.prepare({rate, 1}), std::nullopt);
    const auto samples = sound(random, 22'345);
    const Results expected = slow.results(samples);
    ASSERT_EQ(expected.size(), 10U);
    expectSame(play(samples), expected);
    for (std::size_t label = 0; label < 3; ++label) {
        const auto [least, most] =
            std::minmax_element(expected.begin(), expected.end(), [&](const auto& a, const auto& b) {
                return a.confidences[label] < b.confidences[label];
            });
        EXPECT_GT(most->confidences[label] - least->confidences[label], 0.01) << "or the test says little";
    }
}

TEST_F(NetworkSoundTaggerTest, AResultComesWithTheBufferThatEndsItsHop) {
    const auto samples = sound(random, 10'000);
    const std::span<const float> all(samples);
    ASSERT_EQ(tagger.prepare({rate, 1}), std::nullopt);
    analyze(all.first(3'999), 0);
    EXPECT_TRUE(heard.empty()) << "a second has not been heard";
    analyze(all.subspan(3'999, 1), 3'999);
    ASSERT_EQ(heard.size(), 1U);
    analyze(all.subspan(4'000, 4'100), 4'000);
    EXPECT_EQ(heard.size(), 3U) << "two hops in one buffer";

    // A stream that is prepared anew brings hops of its own, from its first buffer on.
    ASSERT_EQ(tagger.prepare({rate, 1}), std::nullopt);
    heard.clear();
    analyze(all.first(4'000 - 1), 8'100);
    EXPECT_TRUE(heard.empty());
    analyze(all.subspan(3'999, 1), 8'100 + 3'999);
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_NEAR(heard[0].confidences[0], slow.results(samples)[0].confidences[0], 2e-5);
}

TEST_F(NetworkSoundTaggerTest, HopsOfTheFirstStreamCountFromItsStart) {
    ASSERT_EQ(tagger.prepare({rate, 1}), std::nullopt);
    const auto samples = sound(random, 9'000);
    const auto expected = slow.results(samples, 3'123);
    ASSERT_EQ(expected.front().position, 8'000);
    expectSame(play(samples, 3'123), expected);
}

TEST_F(NetworkSoundTaggerTest, ShortSilenceIsPutBack) {
    // A result looks back on three embeddings, each of 100 + 118 * 40 samples.
    constexpr std::size_t lookBack = 2 * half + 4'820;
    for (const std::size_t gap : {std::size_t{1}, std::size_t{1'234}, lookBack - 1}) {
        ASSERT_EQ(tagger.prepare({rate, 1}), std::nullopt);
        auto samples = sound(random, 24'000);
        std::fill_n(samples.begin() + 7'777, gap, 0.0F);
        const std::span<const float> all(samples);
        auto results = play(all.first(7'777));
        const auto rest = play(all.subspan(7'777 + gap), static_cast<std::int64_t>(7'777 + gap));
        results.insert(results.end(), rest.begin(), rest.end());
        const auto expected = slow.results(samples);
        ASSERT_EQ(results.size(), expected.size());
        for (std::size_t i = 0; i < results.size(); ++i) {
            EXPECT_NEAR(results[i].confidences[1], expected[i].confidences[1], 2e-5) << gap << ", " << i;
        }
    }
}

TEST_F(NetworkSoundTaggerTest, BeginsAnewAfterALongSilenceAndWhereTheStreamGoesBack) {
    constexpr std::int64_t lookBack = 2 * half + 4'820;
    for (const std::int64_t next :
         {7'777 + lookBack, std::int64_t{1'000'000'007}, std::int64_t{7'776}, std::int64_t{0}}) {
        ASSERT_EQ(tagger.prepare({rate, 1}), std::nullopt);
        analyze(std::vector<float>(1), 0);  // hops count from here
        play(sound(random, 7'776), 1);
        const auto samples = sound(random, 11'000);
        expectSame(play(samples, next), slow.results(samples, next));
    }
}

/// Something that sounds the same at every rate: tones that come and go, all far below 2 kHz.
std::vector<float> tones(double sampleRate, double seconds, double delay) {
    std::vector<float> samples(static_cast<std::size_t>(sampleRate * seconds));
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
    ASSERT_EQ(tagger.prepare({rate, 1}), std::nullopt);
    const Results expected = play(tones(rate, 6, 0.01));
    ASSERT_EQ(expected.size(), 11U);
    for (const double other : {8'000.0, 11'025.0, 16'000.0, 44'100.0, 48'000.0, 96'000.0}) {
        // Neither channel 1 is listened to nor what is above half the model's rate.
        auto samples = tones(other, 6, 0);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double t = static_cast<double>(i) / other;
            samples[i] += static_cast<float>(0.1 * std::sin(2 * std::numbers::pi * 2'600 * t));
        }
        const std::size_t frames = samples.size();
        const auto noise = sound(random, frames);
        samples.insert(samples.end(), noise.begin(), noise.end());
        const AudioFormat stereo{other, 2};
        ASSERT_EQ(tagger.prepare(stereo), std::nullopt);
        heard.clear();
        analyze(samples, 0, stereo);
        ASSERT_EQ(heard.size(), expected.size()) << other;
        for (std::size_t i = 0; i < heard.size(); ++i) {
            for (std::size_t label = 0; label < 3; ++label) {
                EXPECT_NEAR(heard[i].confidences[label], expected[i].confidences[label], 0.01)
                    << other << ", " << i;
            }
        }
        const auto before = std::exchange(heard, {});
        analyze(samples, 0, stereo);
        ASSERT_EQ(heard.size(), before.size());
        for (std::size_t i = 0; i < heard.size(); ++i) {
            EXPECT_EQ(heard[i].confidences, before[i].confidences) << "nothing is left of the first time";
        }
    }
}

// At an odd rate a hop is half a frame short of half a second.
TEST_F(NetworkSoundTaggerTest, StaysInStepWithTheHopsAtEveryRate) {
    for (const double other : {rate, 3'001.0, 44'100.0, 48'001.0}) {
        const AudioFormat format{other, 1};
        ASSERT_EQ(tagger.prepare(format), std::nullopt);
        heard.clear();
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
    EXPECT_TRUE(heard.empty()) << "nothing was prepared";
    ASSERT_EQ(tagger.prepare({rate, 1}), std::nullopt);
    analyze(all.first(5'000), 0);
    for (const AudioFormat& bad :
         {AudioFormat{0, 1}, {-1, 1}, {std::nan(""), 1}, {HUGE_VAL, 1}, {2, 1}, {1e12, 1}, {rate, 0}}) {
        EXPECT_NE(tagger.prepare(bad), std::nullopt) << bad.sampleRate;
    }
    analyze(all, 5'000, {rate, 2});  // another format than was prepared
    analyze({}, 5'000);
    analyze(all.subspan(5'000), 5'000);
    const auto expected = slow.results(samples);
    ASSERT_EQ(heard.size(), expected.size());
    EXPECT_NEAR(heard.back().confidences[2], expected.back().confidences[2], 2e-5);
}

}  // namespace
}  // namespace sordin
