// SPDX-License-Identifier: MIT
#pragma once

#include "replay/evaluation.h"
#include "replay/replay.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace sordin::replay {

/// The complete result for one recording.
struct Report {
    std::string file;
    std::string rules;  ///< name of the rules; if empty, the report omits it
    ReplayResult result;
    std::optional<Evaluation> evaluation;
    double speed = 0;          ///< seconds of the recording per second of the replay
    bool transcripts = false;  ///< whether to include the transcripts
};

/// Formats one line of --hops: the detector's inputs and decisions; with `transcripts` also the keyword score
/// of the transcript.
[[nodiscard]] nlohmann::ordered_json hopJson(const ReplayedHop& hop, bool transcripts);

[[nodiscard]] nlohmann::ordered_json reportJson(const Report& report);

/// Formats a table of the ads, their totals, the comparison with the real ads if they are known, and the
/// speed. The text ends with a newline.
[[nodiscard]] std::string reportText(const Report& report);

}  // namespace sordin::replay
