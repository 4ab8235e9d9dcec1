// SPDX-License-Identifier: MIT
#pragma once

#include "replay/labels.h"

#include <filesystem>
#include <vector>

namespace sordin::demo {

/// The broadcast of the demonstration. Times are in seconds from its start.
struct Broadcast {
    double duration = 0;
    std::vector<replay::Interval> breaks;  ///< the commercial breaks, in chronological order
};

/// Reads the length of a recording and its label track. Throws replay::InputError.
[[nodiscard]] Broadcast readBroadcast(const std::filesystem::path& recording,
                                      const std::filesystem::path& labels);

}  // namespace sordin::demo
