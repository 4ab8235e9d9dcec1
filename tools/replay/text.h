// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace sordin::replay {

/// printf into a string, of at most 255 characters.
[[gnu::format(printf, 1, 2)]] [[nodiscard]] std::string formatted(const char* format, ...);

/// A share of 0 to 1 as the program shows it everywhere: in percent, cut off, not rounded.
[[nodiscard]] int percent(double share);

/// 75.5 is 1:15.5, 3675.5 is 1:01:15.5.
[[nodiscard]] std::string timeText(double seconds);

}  // namespace sordin::replay
