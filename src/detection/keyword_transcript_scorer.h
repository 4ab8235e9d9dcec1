// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"

#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace sordin {

/// Looks for advertising phrases in a transcript and adds up their weights.
class KeywordTranscriptScorer final : public TranscriptScoring {
public:
    struct Phrase {
        std::string_view text;  ///< lower-case ASCII
        float weight;
    };

    /// The phrases, each of which counts at most once. Those who feed transcripts can see what is looked for.
    [[nodiscard]] static std::span<const Phrase> phrases();

    /// Those that occur anywhere in the lower-cased text, in the order of the table.
    [[nodiscard]] static std::vector<Phrase> phrasesIn(std::string_view text);

    /// Sum of the weights of the phrases that occur anywhere in the lower-cased text (also inside words),
    /// divided by 1.2 and at most 1.
    [[nodiscard]] float score(std::string_view text) const override;
};

}  // namespace sordin
