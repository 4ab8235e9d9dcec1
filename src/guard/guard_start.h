// SPDX-License-Identifier: MIT
// What the guard is started with beside its standard streams.
#pragma once

#include <array>
#include <csignal>

namespace sordin::guard_start {

inline constexpr int program = 3;   ///< a pidfd: readable once the program is gone
inline constexpr int messages = 4;  ///< a socket of whole messages
inline constexpr int firstFreeDescriptor = 5;

/// Blocked, until the guard ignores them: none can end it before.
inline constexpr std::array heldBackSignals{SIGTERM, SIGHUP, SIGINT, SIGPIPE, SIGXFSZ};

}  // namespace sordin::guard_start
