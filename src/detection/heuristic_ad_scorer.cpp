// SPDX-License-Identifier: MIT
#include "detection/heuristic_ad_scorer.h"

#include "detection/sample_math.h"

#include <algorithm>

namespace sordin {

namespace {

/// Speech over music, the texture of a commercial, counts double; a jingle counts by itself.
float audioStrength(const DetectionSignals& signals) {
    // Limited first: of two values of which one is no number, the minimum is one or the other by their order.
    const float both = std::min(clampToUnit(signals.music), clampToUnit(signals.speech));
    return clampToUnit(2.0F * both + 0.8F * signals.jingle);
}

/// Ads come in breaks: the next is likelier for two minutes after one ended, linearly less so.
float timingStrength(const DetectionSignals& signals) {
    constexpr double breakSeconds = 120;
    if (!signals.sinceLastAd || !(*signals.sinceLastAd < breakSeconds)) {
        return 0;
    }
    return static_cast<float>(1.0 - *signals.sinceLastAd / breakSeconds);
}

/// Counts from 2 dB above the running average, fully from 8 dB.
float loudnessStrength(const DetectionSignals& signals) {
    return clampToUnit((signals.loudnessRise - 2.0F) / 6.0F);
}

}  // namespace

HeuristicAdScorer::Verdict HeuristicAdScorer::update(const DetectionSignals& signals) {
    Verdict verdict;
    if (signals.silent) {
        smoothed_ *= 0.7F;
        boundary_ *= 0.9F;
        verdict.confidence = smoothed_;
        return verdict;
    }
    boundary_ = std::max(boundary_ * 0.93F, signals.boundary);

    const std::array<float, weights.size()> strengths{
        audioStrength(signals),
        signals.keywordActive ? signals.keyword : 0.0F,
        boundary_,
        signals.repetition,
        timingStrength(signals),
        loudnessStrength(signals),
    };
    float doubt = 1;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        const float share = weights[i].weight * strengths[i];
        verdict.contributions.append({weights[i].name, share});
        doubt *= 1.0F - share;
    }
    verdict.raw = clampToUnit(1.0F - doubt);
    smoothed_ = 0.6F * smoothed_ + 0.4F * verdict.raw;
    verdict.confidence = smoothed_;
    return verdict;
}

void HeuristicAdScorer::reset() {
    smoothed_ = 0;
    boundary_ = 0;
}

}  // namespace sordin
