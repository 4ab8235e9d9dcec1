// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"

#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace sordin {

/// Finds advertising phrases in a transcript and adds their weights.
class KeywordTranscriptScorer final : public TranscriptScoring {
public:
    struct Phrase {
        std::string_view text;  ///< lower-case ASCII
        float weight;
    };

    /// The table of phrases. Public so that a speech decoder's output can be checked for them.
    [[nodiscard]] static std::span<const Phrase> phrases();

    /// The phrases that occur anywhere in the lower-cased text, in the order of the table.
    [[nodiscard]] static std::vector<Phrase> phrasesIn(std::string_view text);

    /// Adds the weights of the phrases that occur in the lower-cased text (also inside words), each counted
    /// once, and returns the sum divided by 1.2, at most 1.
    [[nodiscard]] float score(std::string_view text) const override;
};

}  // namespace sordin
