// SPDX-License-Identifier: MIT
#include "random_seed.h"
#include "sounds.h"
#include "support/resampler.h"

#include <gtest/gtest.h>

#include <complex>
#include <stdexcept>

namespace sordin {
namespace {

/// Amplitude of one frequency over the middle half of the samples.
double amplitudeAt(double frequency, double rate, const std::vector<float>& samples) {
    std::complex<double> sum = 0;
    const std::size_t begin = samples.size() / 4;
    const std::size_t end = 3 * samples.size() / 4;
    for (std::size_t i = begin; i < end; ++i) {
        sum += static_cast<double>(samples[i]) *
               std::polar(1.0, -2 * std::numbers::pi * frequency * static_cast<double>(i) / rate);
    }
    return 2 * std::abs(sum) / static_cast<double>(end - begin);
}

std::vector<float> resampled(const std::vector<float>& input, double from, double to,
                             Resampler::Quality quality = Resampler::Quality::fast) {
    Resampler resampler(from, to, quality);
    std::vector<float> output;
    resampler.process(input, output);
    resampler.finish(output);
    return output;
}

TEST(Resampler, KeepsWhatFitsAndRemovesWhatWouldFoldBack) {
    for (const auto quality : {Resampler::Quality::fast, Resampler::Quality::high}) {
        for (const double from : {8'000.0, 22'050.0, 44'100.0, 48'000.0, 96'000.0}) {
            const auto kept =
                resampled(sine(1'000, from, static_cast<std::size_t>(from)), from, 16'000, quality);
            EXPECT_EQ(kept.size(), 16'000U) << from;
            EXPECT_NEAR(amplitudeAt(1'000, 16'000, kept), 0.5, 0.005) << from;
        }
        const auto removed = resampled(sine(11'000, 48'000, 48'000), 48'000, 16'000, quality);
        EXPECT_LT(amplitudeAt(5'000, 16'000, removed), 0.5e-4);  // 11 kHz would alias to 5 kHz
    }
}

TEST(Resampler, DoesNotDependOnHowTheStreamIsCut) {
    auto random = seededRandom();
    const auto input = sine(440, 44'100, 88'200);
    const auto whole = resampled(input, 44'100, 16'000);
    Resampler resampler(44'100, 16'000);
    for (int round = 0; round < 3; ++round) {  // finish() resets the resampler
        std::vector<float> output;
        std::span<const float> rest(input);
        while (!rest.empty()) {
            const auto size = std::min<std::size_t>(
                rest.size(), std::uniform_int_distribution<std::size_t>(1, 9'000)(random));
            resampler.process(rest.first(size), output);
            rest = rest.subspan(size);
        }
        resampler.finish(output);
        ASSERT_EQ(output.size(), whole.size());
        for (std::size_t i = 0; i < whole.size(); ++i) {
            ASSERT_NEAR(output[i], whole[i], 1e-6) << i;
        }
    }
}

TEST(Resampler, PassesEqualRatesUnchangedAndRefusesImpossibleOnes) {
    const auto input = sine(440, 16'000, 1'600);
    EXPECT_EQ(resampled(input, 16'000, 16'000), input);
    for (const double bad : {0.0, -1.0, std::nan(""), HUGE_VAL, 50.0, 1e9}) {
        EXPECT_THROW(Resampler(bad, 16'000), std::invalid_argument) << bad;
    }
}

}  // namespace
}  // namespace sordin
