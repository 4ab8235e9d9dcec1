// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"

namespace sordin {

/// Combines six kinds of evidence into one ad confidence. The share of each kind is its weight times its
/// strength, so no single kind can exceed its weight. The noisy OR of the shares, 1 - product(1 - share), is
/// smoothed exponentially over the hops. The contributions are in the order Audio, Keywords, Boundary,
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
    float boundary_ = 0;  // decaying evidence of a context change
};

}  // namespace sordin
