// SPDX-License-Identifier: MIT
#pragma once

#include "replay/evaluation.h"
#include "replay/replay.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace sordin::replay {

/// Everything that is said of one recording in the end.
struct Report {
    std::string file;
    std::string rules;  ///< what the rules are called; empty: they are not named
    ReplayResult result;
    std::optional<Evaluation> evaluation;
    double speed = 0;          ///< recording's seconds per second that the replay took
    bool transcripts = false;  ///< whether they are wanted
};

/// One line of --hops: what the detector knew and decided; with `transcripts` also how much the transcript
/// reads like an advertisement.
[[nodiscard]] nlohmann::ordered_json hopJson(const ReplayedHop& hop, bool transcripts);

[[nodiscard]] nlohmann::ordered_json reportJson(const Report& report);

/// A table of the ads, their totals, how they match the truth if it is known, and the speed; ends with a line
/// end.
[[nodiscard]] std::string reportText(const Report& report);

}  // namespace sordin::replay
