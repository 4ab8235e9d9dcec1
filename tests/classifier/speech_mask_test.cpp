// SPDX-License-Identifier: MIT
#include "classifier/mask_files.h"
#include "classifier/speech_mask_file.h"
#include "detection/sample_math.h"
#include "random_seed.h"
#include "replay/audio_file.h"
#include "sounds.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <complex>
#include <fstream>
#include <functional>
#include <limits>

namespace sordin {
namespace {

using Values = std::vector<double>;

Values applied(const SoundModel::Dense& layer, const Values& input) {
    Values output(layer.bias.begin(), layer.bias.end());
    for (std::size_t i = 0; i < output.size(); ++i) {
        for (std::size_t k = 0; k < input.size(); ++k) {
            output[i] += static_cast<double>(layer.weights[i * input.size() + k]) * input[k];
        }
    }
    return output;
}

double logistic(double value) {
    return 1 / (1 + std::exp(-value));
}

void step(const SpeechMaskModel::Recurrent& unit, const Values& input, Values& values) {
    const Values a = applied(unit.input, input);
    const Values b = applied(unit.recurrent, values);
    const std::size_t count = values.size();
    for (std::size_t i = 0; i < count; ++i) {
        const double reset = logistic(a[i] + b[i]);
        const double update = logistic(a[count + i] + b[count + i]);
        const double fresh = std::tanh(a[2 * count + i] + reset * b[2 * count + i]);
        values[i] = (1 - update) * fresh + update * values[i];
    }
}

/// The output of a mask by plain sums, for all samples at once.
Values slowlyMasked(const SpeechMaskModel& mask, const std::vector<float>& samples) {
    const std::size_t window = mask.window;
    const std::size_t shift = window / 2;
    Values result(samples.size() / shift * shift + shift);
    Values first(mask.first.recurrent.in);
    Values second(first.size());
    const auto root = [&](std::size_t n) {
        return std::sin(std::numbers::pi * static_cast<double>(n) / static_cast<double>(window));
    };
    const auto turn = [&](std::size_t k, std::size_t n, double sign) {
        return std::polar(1.0, sign * 2 * std::numbers::pi * static_cast<double>(k * n % window) /
                                   static_cast<double>(window));
    };
    for (std::size_t at = shift; at <= samples.size(); at += shift) {
        std::vector<std::complex<double>> bins(shift + 1);
        Values logarithms;
        for (std::size_t k = 0; k <= shift; ++k) {
            for (std::size_t n = at == shift ? shift : 0; n < window; ++n) {
                bins[k] += root(n) * static_cast<double>(samples[at - window + n]) * turn(k, n, -1);
            }
            logarithms.push_back((std::log(std::abs(bins[k]) + static_cast<double>(mask.floor)) +
                                  static_cast<double>(mask.shift)) /
                                 static_cast<double>(mask.scale));
        }
        Values hidden = applied(mask.front, logarithms);
        for (double& value : hidden) {
            value = std::max(value, 0.0);
        }
        step(mask.first, hidden, first);
        step(mask.second, first, second);
        Values sum = first;
        std::transform(sum.begin(), sum.end(), second.begin(), sum.begin(), std::plus<>());
        const Values gains = applied(mask.gains, sum);
        for (std::size_t k = 0; k <= shift; ++k) {
            bins[k] *= std::max(static_cast<double>(mask.least),
                                std::pow(logistic(gains[k]), static_cast<double>(mask.strength)));
        }
        for (std::size_t n = 0; n < window; ++n) {
            double sample = 0;
            for (std::size_t k = 0; k <= shift; ++k) {
                sample += (k == 0 || k == shift ? 1 : 2) * (bins[k] * turn(k, n, 1)).real() /
                          static_cast<double>(window);
            }
            result[at - shift + n] += sample * root(n);
        }
    }
    result.resize(samples.size() / shift * shift);
    return result;
}

std::vector<float> masked(SpeechMask& mask, std::span<const float> samples, std::size_t piece = 320) {
    std::vector<float> cleaned;
    for (; !samples.empty(); samples = samples.subspan(std::min(piece, samples.size()))) {
        mask.process(samples.first(std::min(piece, samples.size())), cleaned);
    }
    return cleaned;
}

TEST(SpeechMask, MatchesThePlainSumsInPiecesOfAnyLength) {
    auto random = seededRandom();
    for (int round = 0; round < 5; ++round) {
        const SpeechMaskModel model = smallMask(random);
        const auto samples = noise(random, 0.1F, 1'001);
        const Values expected = slowlyMasked(model, samples);
        SpeechMask mask(model);
        const auto whole = masked(mask, samples, samples.size());
        ASSERT_EQ(whole.size(), expected.size());
        for (std::size_t i = 0; i < whole.size(); ++i) {
            ASSERT_NEAR(static_cast<double>(whole[i]), expected[i], 1e-5) << i;
        }
        for (const std::size_t piece : {1U, 31U, 33U, 500U}) {
            mask.reset();
            EXPECT_EQ(masked(mask, samples, piece), whole) << piece;
        }
    }
}

TEST(SpeechMask, WithoutStrengthDelaysAndNothingElse) {
    auto random = seededRandom();
    SpeechMaskModel model = smallMask(random);
    model.strength = 0;
    SpeechMask mask(model);
    auto samples = noise(random, 0.2F, 640);
    const auto out = masked(mask, samples);
    for (std::size_t i = 32; i < out.size(); ++i) {
        EXPECT_NEAR(out[i], samples[i - 32], 1e-5F);
    }
    samples[100] = std::numeric_limits<float>::quiet_NaN();
    samples[200] = std::numeric_limits<float>::infinity();
    for (const float sample : masked(mask, samples)) {
        EXPECT_TRUE(std::isfinite(sample));
    }
}

TEST(SpeechMaskFile, GivesBackWhatWasWrittenAndRefusesWhatCannotBeMeant) {
    auto random = seededRandom();
    const SpeechMaskModel model = smallMask(random);
    const Bytes whole = fileOf(model);
    EXPECT_EQ(payloadOf(readSpeechMask(whole, "some.bin")), payloadOf(model));
    const auto refusal = [](const Bytes& bytes) -> std::string {
        try {
            static_cast<void>(readSpeechMask(bytes, "some.bin"));
        } catch (const SpeechMaskError& error) {
            return error.what();
        }
        return "";
    };
    using testing::HasSubstr;
    for (std::size_t at = 0; at < whole.size(); at += 13) {
        EXPECT_THAT(refusal({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at)}),
                    HasSubstr("some.bin: "));
        Bytes damaged = whole;
        damaged[at] ^= std::byte(0x10);
        EXPECT_NE(refusal(damaged), "") << at;
    }
    Bytes longer = payloadOf(model);
    longer.push_back({});
    EXPECT_THAT(refusal(fileOf(longer, "SORDINVM")), HasSubstr("unexpected data after"));
    EXPECT_THAT(refusal(fileOf(payloadOf(model))), HasSubstr("not a speech mask"));
    constexpr float notFinite = std::numeric_limits<float>::infinity();
    const std::vector<std::pair<std::string, std::function<void(SpeechMaskModel&)>>> flaws{
        {"sample rate", [](auto& m) { m.rate = 0; }},
        {"window", [](auto& m) { m.window = 65; }},
        {"window", [](auto& m) { m.window = 0xFFFFFFFEU; }},
        {"floor", [](auto& m) { m.floor = 0; }},
        {"not finite", [](auto& m) { m.shift = notFinite; }},
        {"scale", [](auto& m) { m.scale = 0; }},
        {"strength", [](auto& m) { m.strength = -1; }},
        {"least gain", [](auto& m) { m.least = 1.5F; }},
        {"does not fit", [](auto& m) { m.window = 66; }},
        {"too many outputs", [](auto& m) { m.front.out = 0xFFFFFFFFU; }},
        {"does not fit", [](auto& m) { m.first.input.in = 6; }},
        {"too many units", [](auto& m) { m.first.recurrent.in = 0; }},
        {"does not fit", [](auto& m) { m.second.recurrent.in = 4; }},
        {"number of gains differs", [](auto& m) { m.gains.out = 32; }},
        {"not finite", [](auto& m) { m.second.input.weights[3] = notFinite; }},
    };
    for (const auto& [expected, make] : flaws) {
        SpeechMaskModel flawed = model;
        make(flawed);
        EXPECT_NE(refusal(fileOf(flawed)), "") << expected;
        EXPECT_THAT(refusal(fileOf(flawed)),
                    testing::AnyOf(HasSubstr(expected), HasSubstr("ends too early")));
    }
}

TEST(SpeechMaskClips, AreCleanedAsInTheTraining) {
    const auto expected = nlohmann::json::parse(std::ifstream(SORDIN_CLIPS "/mask/offer.json"));
    SpeechMask mask(loadSpeechMask(SORDIN_SPEECH_MASK));
    std::vector<float> cleaned;
    replay::AudioFile recording(SORDIN_CLIPS "/offer.flac");
    for (std::vector<float> samples; recording.read(samples); samples.clear()) {
        mask.process(samples, cleaned);
    }
    const auto& levels = expected["levels"];
    const std::size_t length = expected["samples"];  // of each level of the music
    ASSERT_EQ(cleaned.size() / length, levels.size());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const auto piece = std::span(cleaned).subspan(i * length, length);
        EXPECT_NEAR(rootMeanSquare(piece), levels[i].get<float>(), 0.01F * levels[i].get<float>() + 1e-5F)
            << i;
    }
}

}  // namespace
}  // namespace sordin
