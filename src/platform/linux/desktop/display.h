// SPDX-License-Identifier: MIT
// Queries and requests to the display that bypass the toolkit. Each function opens a connection and closes it
// before it returns.
#pragma once

#include <cstdint>
#include <string_view>

namespace sordin {

enum class DisplayState {
    none,  ///< the environment names no display
    /// Not verified for Wayland (only the variable is read) and for a platform in QT_QPA_PLATFORM.
    reachable,
    unreachable
};

/// Returns the state of the display that the environment names.
[[nodiscard]] DisplayState displayState();

/// Whether windows can have transparent parts, for example round corners. False only for an X11 display
/// without a compositing manager.
[[nodiscard]] bool displayMixesWindows();

/// Asks the X11 window manager to bring a window to the front as a direct user action. Toolkits send the
/// request as the application's, which window managers may refuse if the user has not clicked on the
/// application recently.
void bringForward(std::uint32_t window);

/// Keeps an X11 window out of task bars and pagers. Call it before the window is shown.
void hideFromTaskBar(std::uint32_t window);

/// Makes undrawn areas of an X11 window transparent. Call it before the window, which must have an alpha
/// channel, is shown.
void makeTransparent(std::uint32_t window);

/// Ends the desktop's startup feedback for a launch token on X11 (Startup Notification Protocol 0.1).
/// Desktops ignore unknown tokens.
void endStartupNotification(std::string_view token);

}  // namespace sordin
