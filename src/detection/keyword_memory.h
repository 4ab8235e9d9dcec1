// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detector_rules.h"

#include <algorithm>
#include <utility>

namespace sordin {

/// How much the recent transcripts read like an advertisement: a level that rises with the score of a
/// transcript and fades with every hop that is not silent.
class KeywordMemory {
public:
    void setRules(const DetectorRules& rules) { rules_ = rules; }

    /// A transcription session begins: its transcript is new.
    void beginSession() { best_ = 0; }

    /// Takes the score of the running session's transcript, 0 to 1, once a hop.
    void hear(float score) {
        // A transcript is revised as it grows, so a phrase can leave it and come back: only a score above the
        // best so far is a phrase that was not there before.
        if (!rules_.keywordsFadeWhenHeard || score > best_) {
            level_ = std::max(level_, score);
        }
        best_ = std::max(best_, score);
    }

    /// The level of this hop, 0 to 1, which then fades.
    [[nodiscard]] float take() { return std::exchange(level_, level_ * rules_.keywordMemory); }

    /// An ad has ended: what was said counts for less.
    void adEnded() { level_ *= rules_.keywordsAfterAd; }

    void forget() { level_ = 0; }

private:
    DetectorRules rules_;
    float level_ = 0;
    float best_ = 0;  // of the running session's scores
};

}  // namespace sordin
