// SPDX-License-Identifier: MIT
#pragma once

namespace sordin {

/// Asks Sway, where the environment names it, to move our window that has the focus and floats to the
/// pointer, whole within what its bars leave free. Waits for its answers, but not long. Other compositors of
/// Wayland place windows themselves.
void moveFocusedWindowToPointerInSway();

}  // namespace sordin
