// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"

#include <array>
#include <string_view>

namespace sordin {

/// Combines six kinds of evidence into one ad confidence: each strength times its weight, all of them as a
/// noisy OR (each share explains away part of the remaining doubt), smoothed over time. No single kind can
/// carry the evidence beyond its own weight.
class HeuristicAdScorer final : public AdScoring {
public:
    using Verdict = AdVerdict;

    struct SignalWeight {
        std::string_view name;
        float weight;
    };

    /// The weights; contributions come in this order.
    static constexpr std::array<SignalWeight, Contributions::capacity> weights{{
        {"Audio", 0.55F},
        {"Keywords", 0.85F},
        {"Boundary", 0.35F},
        {"Repetition", 0.8F},
        {"Timing", 0.25F},
        {"Loudness", 0.2F},
    }};

    [[nodiscard]] Verdict update(const DetectionSignals& signals) override;
    void reset() override;

private:
    float smoothed_ = 0;
    float boundary_ = 0;  // decaying memory of changes of context
};

}  // namespace sordin
