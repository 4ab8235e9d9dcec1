// SPDX-License-Identifier: MIT
#include "detection/heuristic_ad_scorer.h"

#include "detection/sample_math.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace sordin {

namespace {

/// Speech over music, typical of commercials, counts double. A jingle counts alone.
float audioStrength(const DetectionSignals& signals) {
    // Clamp before std::min, whose result for NaN depends on the order of its arguments.
    const float both = std::min(clampToUnit(signals.music), clampToUnit(signals.speech));
    return clampToUnit(2.0F * both + 0.8F * signals.jingle);
}

/// Ads come in breaks: after an ad, another one is more likely. The effect falls linearly to 0 within 120 s.
float timingStrength(const DetectionSignals& signals) {
    constexpr double breakSeconds = 120;
    if (!signals.sinceLastAd || !(*signals.sinceLastAd < breakSeconds)) {
        return 0;
    }
    return static_cast<float>(1.0 - *signals.sinceLastAd / breakSeconds);
}

/// 0 up to 2 dB above the running average level, 1 from 8 dB on, linear between.
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
    boundary_ = std::max(boundary_ * rules_.boundaryMemory, signals.boundary);

    struct Evidence {
        std::string_view name;
        float weight;
        float strength;
    };
    const DetectorRules::Weights& weights = rules_.weights;
    const std::array<Evidence, Contributions::capacity> evidence{{
        {"Audio", weights.audio, audioStrength(signals)},
        {"Keywords", weights.keywords, signals.keywordActive ? signals.keyword : 0.0F},
        {"Boundary", weights.boundary, boundary_},
        {"Repetition", weights.repetition, signals.repetition},
        {"Timing", weights.timing, timingStrength(signals)},
        {"Loudness", weights.loudness, loudnessStrength(signals)},
    }};
    float doubt = 1;
    for (const auto& [name, weight, strength] : evidence) {
        const float share = weight * strength;
        verdict.contributions.append({name, share});
        doubt *= 1.0F - share;
    }
    verdict.raw = clampToUnit(1.0F - doubt);
    smoothed_ = static_cast<float>(rules_.smoothing) * smoothed_ +
                static_cast<float>(1 - rules_.smoothing) * verdict.raw;
    verdict.confidence = smoothed_;
    return verdict;
}

void HeuristicAdScorer::reset() {
    smoothed_ = 0;
    boundary_ = 0;
}

}  // namespace sordin
