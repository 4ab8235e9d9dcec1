// SPDX-License-Identifier: MIT
#pragma once

#include "replay/replay.h"

#include <optional>
#include <string>
#include <vector>

namespace sordin::replay {

/// One replay of the recording.
struct Panel {
    struct Point {
        double time;  ///< end of the hop, seconds from the start of the recording
        float confidence;
    };

    std::string rules;  ///< name of the rules
    float threshold = 0;
    std::vector<Point> points;  ///< in chronological order
    ReplayResult result;
};

/// The contents of a picture.
struct Picture {
    std::string file;
    std::optional<std::vector<Interval>> truth;  ///< the real ads
    std::vector<Panel> panels;                   ///< replays of the same recording, at least one
};

/// Returns an SVG document with ten minutes of the recording per row. Each row shows for each panel the
/// confidence, the threshold, the ads found and the advertising phrases heard, above the real ads and the
/// time. The transcripts are included as tooltips.
[[nodiscard]] std::string pictureSvg(const Picture& picture);

}  // namespace sordin::replay
