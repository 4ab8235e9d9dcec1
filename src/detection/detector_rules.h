// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace sordin {

/// How the detector weighs its evidence and when it believes that an ad begins and ends: every constant that
/// can be fitted to labelled broadcasts. A plain value, copied freely. A hop is half a second; strengths,
/// shares and confidences are 0 to 1. The defaults are the standard rules.
struct DetectorRules {
    /// The largest share that each kind of evidence can have, 0 to 1.
    struct Weights {
        float audio = 0.55F;
        float keywords = 0.85F;
        float boundary = 0.35F;
        float repetition = 0.8F;
        float timing = 0.25F;
        float loudness = 0.2F;
    };
    Weights weights;

    /// What one hop leaves of the evidence of a change of context.
    float boundaryMemory = 0.93F;

    /// What one hop leaves of the confidence before it; this hop's evidence gets the rest. Double precision,
    /// so that the rest of 0.6 is rounded to the single-precision number nearest to 0.4.
    double smoothing = 0.6;

    /// What one hop leaves of the keyword level.
    float keywordMemory = 0.985F;
    /// When the keyword level begins to fade. True: when a phrase is first heard. False: when the transcript
    /// that contains it is no longer read, up to 15 s later.
    bool keywordsFadeWhenHeard = false;
    /// What the end of an ad leaves of the keyword level.
    float keywordsAfterAd = 0.3F;

    /// An ad starts after `strongRun` hops at or above the threshold if the last of them is `strongMargin`
    /// above it, else after `weakRun` hops.
    float strongMargin = 0.2F;
    std::int64_t strongRun = 2;
    std::int64_t weakRun = 3;

    /// An ad ends after `holdSeconds` with a confidence more than `exitMargin` below the threshold.
    float exitMargin = 0.15F;
    double holdSeconds = 3;
};

[[nodiscard]] constexpr DetectorRules standardRules() {
    return {};
}

/// Fitted by tools/detection/tune to labelled broadcasts: the volume comes back sooner after an ad, and less
/// of the programme is muted. docs/detection.md has the method and the figures. Fit again when the sound
/// model or the decoder changes.
[[nodiscard]] constexpr DetectorRules tunedRules() {
    DetectorRules rules;
    rules.keywordsFadeWhenHeard = true;
    rules.weights.audio = 0.8F;
    rules.weights.keywords = 0.95F;
    rules.weights.boundary = 0;
    rules.weights.repetition = 0.8F;
    rules.weights.timing = 0.15F;
    rules.weights.loudness = 0.2F;
    rules.boundaryMemory = 0.93F;
    rules.smoothing = 0.45;
    rules.keywordMemory = 0.91F;
    rules.keywordsAfterAd = 0.3F;
    rules.strongMargin = 0.35F;
    rules.strongRun = 2;
    rules.weakRun = 7;
    rules.exitMargin = 0.2F;
    rules.holdSeconds = 3;
    return rules;
}

}  // namespace sordin
