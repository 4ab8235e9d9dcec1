// SPDX-License-Identifier: MIT
#pragma once

namespace sordin {

/// Moves this program's focused floating window to the pointer and keeps it within the area that Sway's bars
/// leave free. Does nothing unless the environment names a Sway socket; other Wayland compositors place
/// windows themselves. Blocks for at most about a second per request.
void moveFocusedWindowToPointerInSway();

}  // namespace sordin
