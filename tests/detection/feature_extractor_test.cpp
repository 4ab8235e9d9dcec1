// SPDX-License-Identifier: MIT
#include "detection/feature_extractor.h"
#include "random_seed.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace sordin {
namespace {

constexpr double pi = std::numbers::pi;
constexpr std::size_t frame = FeatureExtractor::frameLength;

std::vector<float> sine(double frequency, double amplitude, std::size_t samples) {
    std::vector<float> audio(samples);
    for (std::size_t i = 0; i < samples; ++i) {
        audio[i] =
            static_cast<float>(amplitude * std::sin(2 * pi * frequency * static_cast<double>(i) / 16'000));
    }
    return audio;
}

std::vector<float> noise(std::mt19937& random, float level, std::size_t samples) {
    std::normal_distribution<float> sample(0, level);
    std::vector<float> audio(samples);
    for (float& value : audio) {
        value = sample(random);
    }
    return audio;
}

/// The bands by definition: a plain Fourier sum in double precision of each frame, mean power over full
/// scale.
std::array<double, bandCount> slowBands(const std::vector<float>& hop,
                                        const std::vector<std::size_t>& starts) {
    std::array<double, bandCount> sums{};
    for (const std::size_t start : starts) {
        for (std::size_t band = 0; band < bandCount; ++band) {
            const std::size_t first = band == 0 ? 1 : std::size_t{4} << (band - 1);
            const std::size_t end = std::size_t{4} << band;
            for (std::size_t k = first; k < end; ++k) {
                std::complex<double> bin = 0;
                for (std::size_t n = 0; n < frame; ++n) {
                    const double window = 0.8165 * (1 - std::cos(2 * pi * static_cast<double>(n) / frame));
                    const double angle = -2 * pi * static_cast<double>(k * n % frame) / frame;
                    bin += static_cast<double>(hop[start + n]) * window * std::polar(1.0, angle);
                }
                sums[band] += 4 * std::norm(bin);
            }
        }
    }
    std::array<double, bandCount> bands{};
    for (std::size_t band = 0; band < bandCount; ++band) {
        bands[band] = 10 * std::log10(sums[band] / (static_cast<double>(starts.size()) * 1048576) + 1e-10);
    }
    return bands;
}

TEST(FeatureExtractor, WindowIsAPeriodicHannOfUnitPower) {
    const FeatureExtractor extractor;
    const auto& window = extractor.window();
    double power = 0;
    for (const float value : window) {
        power += static_cast<double>(value) * static_cast<double>(value);
    }
    EXPECT_NEAR(power / frame, 1, 1e-4);
    EXPECT_EQ(window[0], 0);
    EXPECT_NEAR(window[512], 2 * 0.8165, 1e-6);
    EXPECT_NEAR(window[256], 0.8165, 1e-6);
    EXPECT_EQ(window[1], window[1023]);
}

TEST(FeatureExtractor, BandsMatchAPlainFourierSum) {
    auto random = seededRandom();
    FeatureExtractor extractor;
    const auto hop = noise(random, 0.2F, 8000);
    const auto features = extractor.extract(hop);
    const auto expected = slowBands(hop, {0, 3488, 6976});
    for (std::size_t band = 0; band < bandCount; ++band) {
        EXPECT_NEAR(features.bands[band], expected[band], 0.001) << band;
    }
}

TEST(FeatureExtractor, PureTonesAndNoiseHaveTheirClosedForms) {
    FeatureExtractor extractor;
    // A sine of amplitude a in the middle of bin 64 has |2X|^2 = (0.8165 a N)^2 there and a quarter of it in
    // both neighbours, of which bin 63 belongs to the band below. Its level is a / sqrt(2).
    const double line = 0.8165 * 0.8165 * 0.25;
    const auto tone = extractor.extract(sine(1'000, 0.5, 8000));
    EXPECT_NEAR(tone.bands[5], 10 * std::log10(line * 1.25), 0.01);
    EXPECT_NEAR(tone.bands[4], 10 * std::log10(line * 0.25), 0.01);
    EXPECT_NEAR(tone.db, 20 * std::log10(0.5 / std::sqrt(2.0)), 0.001);
    for (const std::size_t silent : {0U, 1U, 2U, 3U, 6U, 7U}) {
        EXPECT_LT(tone.bands[silent], -85) << silent;
    }
    const auto high = extractor.extract(sine(7'900, 1, 8000));
    EXPECT_GT(high.bands[7], high.bands[6] + 40);

    // White noise of power p has 4 N p per bin, so a band of m of the 512 bins has p m / 256.
    auto random = seededRandom();
    const auto hiss = extractor.extract(noise(random, 0.1F, 8000));
    EXPECT_NEAR(hiss.bands[7], 10 * std::log10(0.01 * 256 / 256), 0.6);
    EXPECT_NEAR(hiss.bands[6], 10 * std::log10(0.01 * 128 / 256), 0.9);
    EXPECT_NEAR(hiss.db, -20, 0.2);
}

TEST(FeatureExtractor, FloorsHoldForSilenceAndForShortHops) {
    FeatureExtractor extractor;
    static_cast<void>(extractor.extract(sine(1'000, 1, 8000)));  // nothing of it may linger
    for (const std::size_t samples : {0U, 1000U, 8000U}) {
        const auto features = extractor.extract(std::vector<float>(samples));
        EXPECT_FLOAT_EQ(features.db, -140) << samples;
        for (const float band : features.bands) {
            EXPECT_FLOAT_EQ(band, -100) << samples;
        }
    }
    const auto shortHop = extractor.extract(std::vector<float>(1023, 0.1F));
    EXPECT_NEAR(shortHop.db, -20, 1e-4);
    EXPECT_FLOAT_EQ(shortHop.bands[0], -100);
}

TEST(FeatureExtractor, LooksAtTheStartTheMiddleAndTheEnd) {
    FeatureExtractor extractor;
    // A click is seen exactly if it lies inside a frame (beyond the window's zero at the frame's first
    // sample).
    const auto seen = [&](std::size_t samples, std::size_t click) {
        std::vector<float> hop(samples);
        hop[click] = 1;
        return extractor.extract(hop).bands[7] > -99;
    };
    EXPECT_FALSE(seen(3071, 2047));  // one frame, 2047 to 3070
    EXPECT_TRUE(seen(3071, 2060));
    EXPECT_TRUE(seen(3071, 3060));
    EXPECT_FALSE(seen(3071, 100));
    EXPECT_TRUE(seen(3072, 100));  // three frames, 0, 1024 and 2048
    EXPECT_TRUE(seen(3072, 1500));
    EXPECT_TRUE(seen(3072, 2500));
    for (const std::size_t inside : {500U, 1010U, 3500U, 4500U, 6990U, 7990U}) {
        EXPECT_TRUE(seen(8000, inside)) << inside;
    }
    for (const std::size_t between : {1024U, 2200U, 3488U, 4512U, 6976U}) {
        EXPECT_FALSE(seen(8000, between)) << between;
    }
    EXPECT_TRUE(seen(1024, 512));
}

TEST(FeatureExtractor, DependsOnNothingButTheHop) {
    auto random = seededRandom();
    const auto hop = noise(random, 0.1F, 8000);
    FeatureExtractor fresh;
    FeatureExtractor used;
    static_cast<void>(used.extract(noise(random, 1, 24'000)));
    static_cast<void>(used.extract(noise(random, 1, 1'500)));
    const auto expected = fresh.extract(hop);
    const auto actual = used.extract(hop);
    EXPECT_EQ(actual.db, expected.db);
    EXPECT_EQ(actual.bands, expected.bands);
}

}  // namespace
}  // namespace sordin
