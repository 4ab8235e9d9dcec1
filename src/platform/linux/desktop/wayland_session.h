// SPDX-License-Identifier: MIT
// Queries a Wayland compositor before the toolkit connects to it.
#pragma once

#include <optional>
#include <utility>
#include <vector>

namespace sordin {

/// The size of a monitor in physical pixels, after rotation.
using MonitorSize = std::pair<int, int>;

struct WaylandSession {
    /// The compositor can draw title bars (zxdg_decoration_manager_v1).
    bool drawsTitleBars = false;
    /// The compositor is Plasma, whose tray reports the places of icons.
    bool isPlasma = false;
    /// Sorted in ascending order.
    std::vector<MonitorSize> monitors;
};

/// Queries the compositor that the environment names; none if it cannot be reached.
[[nodiscard]] std::optional<WaylandSession> waylandSession();

/// Returns the monitors of the X11 display that the environment names, sorted; empty if it cannot be reached.
/// If a compositor scales X11 windows up, these monitors are smaller than those of its WaylandSession.
[[nodiscard]] std::vector<MonitorSize> x11Monitors();

/// Whether Xwayland suits the windows better than Wayland does; `x11` are the monitors of Xwayland. It does
/// if the compositor draws no title bars, because Qt then needs the graphics driver to draw them. It also
/// does on Plasma, which reports the place of the icon but lets no Wayland window choose a place. It does not
/// if the compositor would scale X11 windows up, which blurs them.
[[nodiscard]] bool prefersXwayland(const WaylandSession& session, const std::vector<MonitorSize>& x11);

}  // namespace sordin
