// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detector_rules.h"

#include <algorithm>
#include <utility>

namespace sordin {

/// The keyword level: how strongly recent transcripts read like an advertisement. It rises to the score of a
/// transcript and decays on every hop that is not silent.
class KeywordMemory {
public:
    void setRules(const DetectorRules& rules) { rules_ = rules; }

    /// Call when a transcription session begins.
    void beginSession() { best_ = 0; }

    /// Takes the score of the running session's transcript, 0 to 1. Call once per hop.
    void hear(float score) {
        // The recognizer revises a transcript as it grows, so a phrase can disappear and return. Only a score
        // above the best so far means a new phrase.
        if (!rules_.keywordsFadeWhenHeard || score > best_) {
            level_ = std::max(level_, score);
        }
        best_ = std::max(best_, score);
    }

    /// Returns the level of this hop, 0 to 1, and applies one hop of decay.
    [[nodiscard]] float take() { return std::exchange(level_, level_ * rules_.keywordMemory); }

    /// Lowers the level, because an ad has ended.
    void adEnded() { level_ *= rules_.keywordsAfterAd; }

    void forget() { level_ = 0; }

private:
    DetectorRules rules_;
    float level_ = 0;
    float best_ = 0;  // best score of the running session
};

}  // namespace sordin
