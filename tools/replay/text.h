// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace sordin::replay {

/// Formats like printf into a string of at most 255 characters.
[[gnu::format(printf, 1, 2)]] [[nodiscard]] std::string formatted(const char* format, ...);

/// Converts a share from 0 to 1 to percent, truncated like everywhere in the program.
[[nodiscard]] int percent(double share);

/// Formats a time: 75.5 is 1:15.5, 3675.5 is 1:01:15.5.
[[nodiscard]] std::string timeText(double seconds);

}  // namespace sordin::replay
