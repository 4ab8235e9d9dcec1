// SPDX-License-Identifier: MIT
// What the guard is started with beside its standard streams.
#pragma once

namespace sordin::guard_descriptor {

inline constexpr int program = 3;   ///< a pidfd: readable once the program is gone
inline constexpr int messages = 4;  ///< a socket of whole messages
inline constexpr int firstFree = 5;

}  // namespace sordin::guard_descriptor
