// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

namespace sordin {

/// The process that owns the window the user is looking at, on X11. None on Wayland, which has no general way
/// to ask, without a display, or when no window is active. Any thread.
[[nodiscard]] std::optional<std::int32_t> frontmostWindowProcess();

}  // namespace sordin
