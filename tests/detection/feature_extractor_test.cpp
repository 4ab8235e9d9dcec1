// SPDX-License-Identifier: MIT
#include "detection/feature_extractor.h"
#include "random_seed.h"
#include "sounds.h"

#include <gtest/gtest.h>

#include <complex>

namespace sordin {
namespace {

constexpr double pi = std::numbers::pi;
constexpr std::size_t frame = FeatureExtractor::frameLength;

/// The bands by definition: a plain Fourier sum in double precision of each frame, under a Hann window of
/// unit power; mean power relative to full scale.
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

TEST(FeatureExtractor, BandsMatchAPlainFourierSumAtTheStartTheMiddleAndTheEnd) {
    auto random = seededRandom();
    FeatureExtractor extractor;  // shared, because no state may survive a hop
    const auto expectBands = [&](const std::vector<float>& hop, const std::vector<std::size_t>& starts,
                                 double tolerance) {
        const auto features = extractor.extract(hop);
        const auto expected = slowBands(hop, starts);
        for (std::size_t band = 0; band < bandCount; ++band) {
            EXPECT_NEAR(features.bands[band], expected[band], tolerance) << hop.size() << ", " << band;
        }
    };
    expectBands(noise(random, 0.2F, 8001), {0, 3488, 6977}, 0.001);
    expectBands(noise(random, 0.2F, 1024), {0}, 0.001);
    expectBands(noise(random, 1, 3071), {2047}, 0.001);
    expectBands(noise(random, 0.2F, 3072), {0, 1024, 2048}, 0.001);
    expectBands(sine(1'000, 16'000, 8000), {0, 3488, 6976}, 0.01);  // most bands near the floor
    expectBands(sine(7'900, 16'000, 8000, 1), {0, 3488, 6976}, 0.01);
}

TEST(FeatureExtractor, LevelsAreOfAllSamplesAndFloorsHoldForSilenceAndForShortHops) {
    FeatureExtractor extractor;
    EXPECT_NEAR(extractor.extract(sine(1'000, 16'000, 8000)).db, 20 * std::log10(0.5 / std::sqrt(2.0)),
                0.001);
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

}  // namespace
}  // namespace sordin
