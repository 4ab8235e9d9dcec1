// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"

namespace sordin {

/// Combines six kinds of evidence into one ad confidence: each strength times its weight, all of them as a
/// noisy OR (each share explains away part of the remaining doubt), smoothed over time. No single kind can
/// carry the evidence beyond its own weight. The contributions come in the order Audio, Keywords, Boundary,
/// Repetition, Timing, Loudness.
class HeuristicAdScorer final : public AdScoring {
public:
    using Verdict = AdVerdict;

    void setRules(const DetectorRules& rules) override { rules_ = rules; }
    [[nodiscard]] Verdict update(const DetectionSignals& signals) override;
    void reset() override;

private:
    DetectorRules rules_;
    float smoothed_ = 0;
    float boundary_ = 0;  // decaying memory of changes of context
};

}  // namespace sordin
