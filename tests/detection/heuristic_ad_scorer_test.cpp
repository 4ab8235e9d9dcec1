// SPDX-License-Identifier: MIT
#include "detection/heuristic_ad_scorer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <map>

namespace sordin {
namespace {

std::map<std::string, float> shares(const AdVerdict& verdict) {
    std::map<std::string, float> result;
    for (const auto& [name, value] : verdict.contributions) {
        result[std::string(name)] = value;
    }
    return result;
}

/// The share of one signal in the first hop of a new scorer.
float share(const std::string& name, const DetectionSignals& signals) {
    HeuristicAdScorer scorer;
    return shares(scorer.update(signals)).at(name);
}

TEST(HeuristicAdScorer, WeighsEachSignalByItself) {
    EXPECT_FLOAT_EQ(share("Audio", {.music = 0.9F, .speech = 0.8F}), 0.55F);
    EXPECT_FLOAT_EQ(share("Audio", {.music = 0.1F, .speech = 0.8F}), 0.55F * 0.2F);
    EXPECT_FLOAT_EQ(share("Audio", {.music = 0.1F, .jingle = 0.5F}), 0.55F * 0.4F);
    EXPECT_FLOAT_EQ(share("Keywords", {.keyword = 1, .keywordActive = true}), 0.85F);
    EXPECT_FLOAT_EQ(share("Keywords", {.keyword = 1, .keywordActive = false}), 0);
    EXPECT_FLOAT_EQ(share("Boundary", {.boundary = 0.5F}), 0.175F);
    EXPECT_FLOAT_EQ(share("Repetition", {.repetition = 0.5F}), 0.4F);
    EXPECT_FLOAT_EQ(share("Timing", {.sinceLastAd = 30}), 0.1875F);
    EXPECT_FLOAT_EQ(share("Timing", {.sinceLastAd = 180}), 0);
    EXPECT_FLOAT_EQ(share("Timing", {}), 0);
    EXPECT_FLOAT_EQ(share("Loudness", {.loudnessRise = 5}), 0.1F);
    EXPECT_FLOAT_EQ(share("Loudness", {.loudnessRise = 2}), 0);
    EXPECT_FLOAT_EQ(share("Loudness", {.loudnessRise = -3}), 0);
    EXPECT_FLOAT_EQ(share("Loudness", {.loudnessRise = 20}), 0.2F);
}

TEST(HeuristicAdScorer, CombinesThemAsANoisyOrInTheOrderOfTheWeights) {
    HeuristicAdScorer scorer;
    const auto verdict = scorer.update({.music = 1,
                                        .speech = 1,
                                        .boundary = 1,
                                        .repetition = 1,
                                        .loudnessRise = 8,
                                        .keyword = 1,
                                        .keywordActive = true,
                                        .sinceLastAd = 0});
    EXPECT_NEAR(verdict.raw, 1 - 0.45 * 0.15 * 0.65 * 0.2 * 0.75 * 0.8, 1e-6);
    EXPECT_NEAR(verdict.confidence, 0.4 * 0.9947, 1e-4);
    std::vector<std::string> names;
    for (const auto& contribution : verdict.contributions) {
        names.emplace_back(contribution.name);
    }
    EXPECT_THAT(names,
                testing::ElementsAre("Audio", "Keywords", "Boundary", "Repetition", "Timing", "Loudness"));
}

TEST(HeuristicAdScorer, SmoothsAndRemembersBoundaries) {
    HeuristicAdScorer scorer;
    double smoothed = 0;
    double memory = 1;
    for (int hop = 0; hop < 20; ++hop) {
        const auto verdict = scorer.update({.boundary = hop == 0 ? 1.0F : 0.0F});
        smoothed = 0.6 * smoothed + 0.4 * 0.35 * memory;
        EXPECT_NEAR(shares(verdict).at("Boundary"), 0.35 * memory, 1e-6) << hop;
        EXPECT_NEAR(verdict.confidence, smoothed, 1e-6) << hop;
        memory *= 0.93;
    }
    scorer.reset();
    const auto verdict = scorer.update({});
    EXPECT_EQ(verdict.confidence, 0);
    EXPECT_EQ(verdict.raw, 0);
    EXPECT_EQ(verdict.contributions.size(), 6U);
}

TEST(HeuristicAdScorer, FollowsOtherRulesFromTheNextHopOn) {
    HeuristicAdScorer scorer;
    const float before = scorer.update({.music = 1, .speech = 1, .boundary = 1}).confidence;
    DetectorRules rules;
    rules.weights = {0.1F, 0.2F, 0.3F, 0.4F, 0.5F, 0.6F};
    rules.boundaryMemory = 0.5F;
    rules.smoothing = 0.9;
    scorer.setRules(rules);
    const auto verdict = scorer.update({.music = 1,
                                        .speech = 1,
                                        .repetition = 1,
                                        .loudnessRise = 8,
                                        .keyword = 1,
                                        .keywordActive = true,
                                        .sinceLastAd = 0});
    std::vector<float> values;
    for (const auto& contribution : verdict.contributions) {
        values.push_back(contribution.value);
    }
    EXPECT_THAT(values, testing::Pointwise(testing::FloatEq(), {0.1F, 0.2F, 0.15F, 0.4F, 0.5F, 0.6F}));
    EXPECT_NEAR(verdict.raw, 1 - 0.9 * 0.8 * 0.85 * 0.6 * 0.5 * 0.4, 1e-6);
    EXPECT_FLOAT_EQ(verdict.confidence, 0.9F * before + 0.1F * verdict.raw);
}

TEST(HeuristicAdScorer, SilenceForgetsFasterThanBoundariesFade) {
    HeuristicAdScorer scorer;
    const auto before = scorer.update({.music = 1, .speech = 1, .boundary = 0.5F});
    const auto silent = scorer.update({.silent = true});
    EXPECT_FLOAT_EQ(silent.confidence, before.confidence * 0.7F);
    EXPECT_EQ(silent.raw, 0);
    EXPECT_TRUE(silent.contributions.empty());
    EXPECT_FLOAT_EQ(shares(scorer.update({})).at("Boundary"), 0.35F * 0.5F * 0.9F * 0.93F);
}

TEST(HeuristicAdScorer, ScoresThatAreNoNumbersPassWithoutATrace) {
    HeuristicAdScorer scorer;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(share("Audio", {.music = 1, .speech = nan}), 0);
    EXPECT_EQ(share("Audio", {.music = nan, .speech = 1}), 0);
    static_cast<void>(
        scorer.update({.music = nan, .speech = nan, .jingle = nan, .boundary = nan, .loudnessRise = nan}));
    const auto verdict = scorer.update({.music = 1, .speech = 1});
    EXPECT_NEAR(verdict.raw, 0.55, 1e-6);
    EXPECT_NEAR(verdict.confidence, 0.22, 1e-6);
}

}  // namespace
}  // namespace sordin
