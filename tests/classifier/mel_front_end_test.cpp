// SPDX-License-Identifier: MIT
#include "classifier/mel_front_end.h"
#include "classifier/model_files.h"
#include "classifier/natural_logarithm.h"
#include "classifier/slow_sound_model.h"
#include "random_seed.h"
#include "sounds.h"

#include <gtest/gtest.h>

#include <cmath>

namespace sordin {
namespace {

/// The sizes of the shipped model.
constexpr SoundModel::FrontEnd realSettings{16'000, 400, 160, 512, 64, 60, 7'800, 1e-4F, 9, 2.5F, 7, 2};

SoundModel modelWith(const SoundModel::FrontEnd& settings) {
    SoundModel model;
    model.frontEnd = settings;
    return model;
}

TEST(MelFrontEnd, BandsMatchAPlainFourierSum) {
    auto random = seededRandom();
    // The second one reaches up to half the rate and fills its transform.
    for (const auto& settings : {realSettings, {8'000, 256, 100, 256, 20, 0, 4'000, 1e-6F, 9, 2.5F, 7, 2}}) {
        MelFrontEnd frontEnd(settings);
        const SlowSoundModel slow(modelWith(settings));
        std::vector<float> bands(settings.mels);
        for (const float level : {0.1F, 1e-4F, 60'000.0F, 0.0F}) {
            const auto samples = noise(random, level, settings.window);
            frontEnd.frame(samples, bands);
            const auto expected = slow.frame(samples);
            for (std::size_t band = 0; band < bands.size(); ++band) {
                EXPECT_NEAR(bands[band], expected[band], 2e-4) << level << ", band " << band;
            }
        }
        EXPECT_EQ(bands, std::vector<float>(settings.mels, frontEnd.silence())) << "bands of silence";
    }
}

TEST(MelFrontEnd, PatchesHaveALevelOfTheirOwn) {
    auto random = seededRandom();
    const MelFrontEnd frontEnd(realSettings);
    const SlowSoundModel slow(modelWith(realSettings));
    auto patch = noise(random, 4, std::size_t{7} * 64);  // sometimes exceeds the range of 9
    const auto expected = slow.normalised({patch.begin(), patch.end()});
    auto louder = patch;
    for (float& value : louder) {
        value += 3;
    }
    const auto actual = frontEnd.normalise(patch);
    ASSERT_EQ(actual.size(), expected.size()) << "three pairs; the seventh frame is dropped";
    const auto alike = frontEnd.normalise(louder);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], 1e-5) << i;
        EXPECT_NEAR(alike[i], expected[i], 1e-5) << i;
    }
}

TEST(NaturalLogarithm, IsRightToTheLastDigits) {
    auto random = seededRandom();
    std::uniform_real_distribution<double> exponent(-60, 60);
    double worst = 0;
    for (int i = 0; i < 100'000; ++i) {
        const auto value = static_cast<float>(std::exp(exponent(random)));
        const double right = std::log(static_cast<double>(value));
        worst = std::max(worst, std::abs(static_cast<double>(naturalLogarithm(value)) - right) /
                                    std::max(1.0, std::abs(right)));
    }
    EXPECT_LT(worst, 1.5e-7);
    EXPECT_EQ(naturalLogarithm(1), 0);
}

}  // namespace
}  // namespace sordin
