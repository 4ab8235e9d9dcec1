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

    std::string rules;  ///< what they are called
    float threshold = 0;
    std::vector<Point> points;  ///< in the order of time
    ReplayResult result;
};

/// What is drawn of a recording.
struct Picture {
    std::string file;
    std::optional<std::vector<Interval>> truth;  ///< where the ads really are
    std::vector<Panel> panels;                   ///< of the same recording, at least one
};

/// An SVG document: ten minutes of the recording a row, and in each row for each panel the confidence, the
/// threshold, the ads found and the advertising phrases heard, over the ads of the truth and the time. The
/// whole transcripts are in it as tooltips.
[[nodiscard]] std::string pictureSvg(const Picture& picture);

}  // namespace sordin::replay
