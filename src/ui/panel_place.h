// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <optional>

namespace sordin {

/// Where the icon is that was clicked, out of what the desktop said (`told`; (0, 0) for nothing) and, where
/// it is known, where the pointer is. Panels tell places in coordinates of their own, or in none. `screen` is
/// that of the pointer, else of the told place; `free` is the part of it that no bar takes.
[[nodiscard]] QPoint iconPlace(QPoint told, std::optional<QPoint> pointer, QRect screen, QRect free);

/// Where a panel of this size belongs (its left upper corner) beside an icon that was clicked: below or above
/// it, whichever has the room, or to its side where icons stand at one; always whole within `free`, the part
/// of the screen that no bar takes.
[[nodiscard]] QPoint panelPlace(QPoint click, QSize size, QRect free);

}  // namespace sordin
