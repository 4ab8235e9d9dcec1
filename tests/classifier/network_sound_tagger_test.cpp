// SPDX-License-Identifier: MIT
#include "classifier/model_files.h"
#include "classifier/network_sound_tagger.h"
#include "classifier/slow_sound_model.h"
#include "classifier/sound_model_file.h"
#include "random_seed.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <map>

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

}  // namespace
}  // namespace sordin
