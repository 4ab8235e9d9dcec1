// SPDX-License-Identifier: MIT
// Descriptors and signals with which the program starts the guard.
#pragma once

#include <array>
#include <csignal>

namespace sordin::guard_start {

inline constexpr int program = 3;   ///< pidfd of the program: readable when the program has ended
inline constexpr int messages = 4;  ///< socket that preserves message boundaries
inline constexpr int firstFreeDescriptor = 5;

/// Signals that the guard ignores. The program starts it with these blocked, so that none can end it before
/// that.
inline constexpr std::array heldBackSignals{SIGTERM, SIGHUP, SIGINT, SIGPIPE, SIGXFSZ};

}  // namespace sordin::guard_start
