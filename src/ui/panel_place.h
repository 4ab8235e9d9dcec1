// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <optional>

namespace sordin {

/// Estimates the place of the clicked icon from the place that the desktop reported (`reported`; (0, 0) if
/// none) and, if known, from the pointer. Some desktop panels report places in other coordinates or none at
/// all. `screen` is the screen of the pointer, else of the reported place; `free` is its area without bars.
[[nodiscard]] QPoint iconPlace(QPoint reported, std::optional<QPoint> pointer, QRect screen, QRect free);

/// Returns the top left corner for a panel of this size beside the clicked icon: below or above it, whichever
/// has room, or beside it if the icons are at the side of the screen. If it fits, the panel is completely
/// within `free`, the area of the screen without bars.
[[nodiscard]] QPoint panelPlace(QPoint click, QSize size, QRect free);

}  // namespace sordin
