// SPDX-License-Identifier: MIT
// What a Wayland compositor offers to windows, asked before the toolkit connects to it.
#pragma once

#include <optional>
#include <utility>
#include <vector>

namespace sordin {

/// The size of a monitor, in its own pixels and as the user sees it (turned, if the monitor is).
using MonitorSize = std::pair<int, int>;

struct WaylandSession {
    /// Title bars can be had from the compositor (zxdg_decoration_manager_v1).
    bool drawsTitleBars = false;
    /// Plasma, whose icons have a known place on the screen.
    bool isPlasma = false;
    /// Sorted.
    std::vector<MonitorSize> monitors;
};

/// Of the compositor that the environment names; none if it cannot be reached.
[[nodiscard]] std::optional<WaylandSession> waylandSession();

/// The monitors of the X11 display that the environment names, sorted; empty if it cannot be reached. Where
/// a compositor enlarges X11 windows, they are smaller than those of its WaylandSession.
[[nodiscard]] std::vector<MonitorSize> x11Monitors();

/// Whether windows are best X11 windows, shown by Xwayland, whose monitors are `x11`. They are where the
/// compositor draws no title bars, which Qt can do only with the driver of the graphics card, and on Plasma,
/// which says where the icon is but gives Wayland windows no way to stand there. They are not where the
/// compositor would enlarge X11 windows, which blurs them.
[[nodiscard]] bool prefersXwayland(const WaylandSession& session, const std::vector<MonitorSize>& x11);

}  // namespace sordin
