// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace sordin {

/// Where a panel of this size belongs (its left upper corner) beside an icon that was clicked: below or above
/// it, whichever has the room, or to its side where icons stand at one; always whole within `free`, the part
/// of the screen that no bar takes.
[[nodiscard]] QPoint panelPlace(QPoint click, QSize size, QRect free);

}  // namespace sordin
