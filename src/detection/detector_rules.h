// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace sordin {

/// The constants that decide how the detector weighs its evidence and where an ad begins and ends; all of
/// them can be fitted to labeled broadcasts. A hop is 0.5 s; strengths, shares and confidences are 0 to 1.
/// The default values are the standard rules.
struct DetectorRules {
    /// The share of each kind of evidence at full strength, 0 to 1.
    struct Weights {
        float audio = 0.55F;
        float keywords = 0.85F;
        float boundary = 0.35F;
        float repetition = 0.8F;
        float timing = 0.25F;
        float loudness = 0.2F;
    };
    Weights weights;

    /// Decay of the context change evidence: its factor for each hop that is not silent.
    float boundaryMemory = 0.93F;

    /// Smoothing of the confidence: the weight of the previous confidence on each hop that is not silent. The
    /// hop's evidence gets the remaining weight. Double precision, so that 1 - 0.6 becomes the float nearest
    /// to 0.4.
    double smoothing = 0.6;

    /// Decay of the keyword level: its factor for each hop that is not silent.
    float keywordMemory = 0.985F;
    /// When the keyword level begins to decay. True: when a phrase is first heard. False: when the session
    /// whose transcript contains the phrase ends, up to 15 s later.
    bool keywordsFadeWhenHeard = false;
    /// Factor of the keyword level at the end of an ad.
    float keywordsAfterAd = 0.3F;

    /// An ad starts after `strongRun` consecutive hops at or above the threshold if the last of them is at
    /// least `strongMargin` above it, otherwise after `weakRun` such hops.
    float strongMargin = 0.2F;
    std::int64_t strongRun = 2;
    std::int64_t weakRun = 3;

    /// An ad ends after `holdSeconds` of confidences more than `exitMargin` below the threshold.
    float exitMargin = 0.15F;
    double holdSeconds = 3;
};

[[nodiscard]] constexpr DetectorRules standardRules() {
    return {};
}

/// The rules that tools/detection/tune fitted to labeled broadcasts. Compared with the standard rules, they
/// restore the volume sooner after an ad and mute less content that is not an ad. docs/detection.md has the
/// method and the figures. Fit them again when the sound model or the speech decoder changes.
[[nodiscard]] constexpr DetectorRules tunedRules() {
    DetectorRules rules;
    rules.keywordsFadeWhenHeard = true;
    rules.weights.audio = 0.8F;
    rules.weights.keywords = 0.85F;
    rules.weights.boundary = 0;
    rules.weights.repetition = 0.7F;
    rules.weights.timing = 0.1F;
    rules.weights.loudness = 0.2F;
    rules.boundaryMemory = 0.93F;
    rules.smoothing = 0.45;
    rules.keywordMemory = 0.935F;
    rules.keywordsAfterAd = 0.3F;
    rules.strongMargin = 0.3F;
    rules.strongRun = 2;
    rules.weakRun = 5;
    rules.exitMargin = 0.2F;
    rules.holdSeconds = 3;
    return rules;
}

}  // namespace sordin
