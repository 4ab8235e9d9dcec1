// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

namespace sordin {

/// Returns the process that owns the active window on X11. None on Wayland, which has no general way to query
/// it, without a display, or if no window is active. Any thread.
[[nodiscard]] std::optional<std::int32_t> frontmostWindowProcess();

}  // namespace sordin
