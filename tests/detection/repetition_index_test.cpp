// SPDX-License-Identifier: MIT
#include "detection/repetition_index.h"
#include "random_seed.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace sordin {
namespace {

using Stretch = std::vector<Bands>;  // eight hops

Stretch randomStretch(std::mt19937& random) {
    std::uniform_real_distribution<float> value(-60, -10);
    Stretch stretch(8);
    for (Bands& bands : stretch) {
        for (float& band : bands) {
            band = value(random);
        }
    }
    return stretch;
}

template <class Change>
Stretch changed(Stretch stretch, Change&& change) {
    for (std::size_t t = 0; t < stretch.size(); ++t) {
        for (std::size_t b = 0; b < bandCount; ++b) {
            change(stretch[t][b], t, b);
        }
    }
    return stretch;
}

/// Pushes eight hops and returns the score of the last one.
float push(RepetitionIndex& index, const Stretch& stretch) {
    float score = 0;
    for (const Bands& bands : stretch) {
        score = index.push(bands);
    }
    return score;
}

void learn(RepetitionIndex& index, const Stretch& stretch) {
    push(index, stretch);
    index.learnCurrent();
}

TEST(RepetitionIndex, KnowsAStretchAgainWhateverItsLevelTiltAndGain) {
    auto random = seededRandom();
    const auto ad = randomStretch(random);
    const auto other = randomStretch(random);
    RepetitionIndex index;
    EXPECT_EQ(push(index, ad), 0) << "nothing learned";
    index.learnCurrent();
    EXPECT_EQ(push(index, other), 0);
    EXPECT_FLOAT_EQ(push(index, ad), 1);
    EXPECT_FLOAT_EQ(push(index, changed(ad, [](float& v, auto, auto) { v += 5; })), 1);
    EXPECT_FLOAT_EQ(
        push(index, changed(ad, [](float& v, auto, auto b) { v -= 3.0F * static_cast<float>(b); })), 1);
    EXPECT_FLOAT_EQ(push(index, changed(ad, [](float& v, auto, auto) { v *= 2; })), 1);
    EXPECT_EQ(push(index, changed(ad, [](float& v, auto, auto) { v = -v; })), 0)
        << "the inverted shape does not match";
    EXPECT_FLOAT_EQ(push(index, ad), 1);
    index.forget();
    EXPECT_EQ(index.push(ad[0]), 0);
    push(index, other);
    push(index, ad);
    index.forget();
    index.learnCurrent();  // uses the recent hops
    EXPECT_FLOAT_EQ(push(index, ad), 1);
}

TEST(RepetitionIndex, ScoresBetweenTheTwoSimilarities) {
    // Two passages that change in one band each, with the same pattern, are orthogonal and of equal length.
    // In a mixture by an angle, the cosine to the first is the cosine of that angle.
    constexpr float size = 10;
    const auto mixed = [](double cosine) {
        const double sine = std::sqrt(1 - cosine * cosine);
        return changed(Stretch(8), [&](float& v, std::size_t t, std::size_t b) {
            const double weight = b == 2 ? cosine : b == 5 ? sine : 0;
            v = static_cast<float>(weight) * (t % 2 == 0 ? size : -size);
        });
    };
    RepetitionIndex index;
    learn(index, mixed(1));
    EXPECT_EQ(push(index, mixed(0)), 0);
    EXPECT_EQ(push(index, mixed(0.79)), 0);
    EXPECT_NEAR(push(index, mixed(0.8)), 0, 1e-5);
    EXPECT_NEAR(push(index, mixed(0.89)), 0.5, 1e-5);
    EXPECT_NEAR(push(index, mixed(0.98)), 1, 1e-5);
    learn(index, mixed(0.5));
    EXPECT_NEAR(push(index, mixed(0.89)), 0.5, 1e-5) << "the best match counts, not the latest";
}

TEST(RepetitionIndex, LearnsNothingFlatNorBeforeEightHops) {
    // One band that alternates between +a and -a has the norm a sqrt(8).
    const auto alternating = [](double norm) {
        return changed(Stretch(8), [&](float& v, std::size_t t, std::size_t b) {
            const double swing = norm / std::sqrt(8.0);
            v = b != 0 ? -50.0F : static_cast<float>(t % 2 == 0 ? swing : -swing);
        });
    };
    Stretch exactlyThree(8);
    for (std::size_t t = 0; t < 6; ++t) {
        exactlyThree[t][0] = (t < 2 ? 2.0F : 0.5F) * (t % 2 == 0 ? 1.0F : -1.0F);
    }
    RepetitionIndex index;
    for (const auto& flat : {Stretch(8), alternating(2.999), exactlyThree}) {
        learn(index, flat);
        EXPECT_EQ(index.learnedCount(), 0U);
    }
    const auto moving = alternating(3.001);
    index.clearRecent();
    for (std::size_t t = 0; t < 7; ++t) {
        static_cast<void>(index.push(moving[t]));
        index.learnCurrent();
    }
    EXPECT_EQ(index.learnedCount(), 0U);
    static_cast<void>(index.push(moving[7]));
    index.learnCurrent();
    EXPECT_EQ(index.learnedCount(), 1U);
    EXPECT_EQ(push(index, alternating(2.999)), 0) << "a flat passage matches nothing";
}

TEST(RepetitionIndex, KeepsTheNewestTwoHundred) {
    auto random = seededRandom();
    std::vector<Stretch> ads;
    RepetitionIndex index;
    for (int i = 0; i < 201; ++i) {
        ads.push_back(randomStretch(random));
        learn(index, ads.back());
    }
    EXPECT_EQ(index.learnedCount(), 200U);
    EXPECT_LT(push(index, ads[0]), 0.5F);
    EXPECT_FLOAT_EQ(push(index, ads[1]), 1);
    EXPECT_FLOAT_EQ(push(index, ads[200]), 1);
}

}  // namespace
}  // namespace sordin
