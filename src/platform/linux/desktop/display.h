// SPDX-License-Identifier: MIT
// What can be known of the display before and beside the toolkit that draws on it. The functions open a
// connection of their own for as long as the question takes.
#pragma once

#include <cstdint>
#include <string_view>

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

/// Keeps a window of an X11 display, which is not shown yet, out of lists of windows.
void hideFromTaskBar(std::uint32_t window);

/// Has an X11 display show what is below a window wherever the window is not drawn. To be called before the
/// window, whose pixels can be transparent, is shown.
void makeTransparent(std::uint32_t window);

/// Says on an X11 display that what the user started with this token is there, so that the desktop no longer
/// shows that something starts (Startup Notification Protocol 0.1). Desktops ignore tokens that they do not
/// know.
void endStartupNotification(std::string_view token);

}  // namespace sordin
