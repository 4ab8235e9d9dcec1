// SPDX-License-Identifier: MIT
// What can be known of the display before and beside the toolkit that draws on it. The functions open a
// connection of their own for as long as the question takes.
#pragma once

#include <cstdint>

namespace sordin {

enum class DisplayState {
    none,       ///< the environment names none
    reachable,  ///< of Wayland's only the name is looked at, of what QT_QPA_PLATFORM names nothing
    unreachable
};

/// Of the display that the environment names.
[[nodiscard]] DisplayState displayState();

/// Whether windows may have parts that are not there: round corners, for example. Of an X11 display that has
/// nobody to mix them, no.
[[nodiscard]] bool displayMixesWindows();

/// Asks the window manager of an X11 display to bring a window to the front because the user wants it there.
/// Toolkits ask in the name of the program, which managers may refuse one that nobody has clicked at lately.
void bringForward(std::uint32_t window);

}  // namespace sordin
