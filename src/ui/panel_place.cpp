// SPDX-License-Identifier: MIT
#include "ui/panel_place.h"

#include <algorithm>

namespace sordin {

QPoint iconPlace(QPoint reported, std::optional<QPoint> pointer, QRect screen, QRect free) {
    constexpr int near = 100;
    constexpr int widestBar = 48;  // the widest bar that hides automatically and reserves no space
    const QRect middle = free & screen.marginsRemoved({widestBar, widestBar, widestBar, widestBar});
    const auto inBar = [&](QPoint place) { return screen.contains(place) && !middle.contains(place); };
    if (!pointer) {
        // Icons are usually at the right end of a bar at the top or the bottom.
        const bool atBottom = free.bottom() < screen.bottom();
        return reported.isNull() ? (atBottom ? screen.bottomRight() : screen.topRight()) : reported;
    }
    if (reported.isNull()) {
        return *pointer;
    }
    // If the icon was chosen with the keyboard, the pointer is somewhere else.
    const bool byPointer =
        (reported - *pointer).manhattanLength() > near && (inBar(*pointer) || !inBar(reported));
    return byPointer ? *pointer : reported;
}

QPoint panelPlace(QPoint click, QSize size, QRect free) {
    constexpr int gap = 6;        // to the edges
    constexpr int halfIcon = 14;  // from the click to the edge of the icon
    const auto within = [](int wanted, int first, int last) {
        return std::max(first, std::min(wanted, last));  // also if the panel does not fit
    };
    // A click outside the free area was in a bar; the panel goes beside the bar.
    const bool below = click.y() < free.center().y();
    const int y = free.top() <= click.y() && click.y() <= free.bottom()
                      ? (below ? click.y() + halfIcon : click.y() - halfIcon - size.height())
                      : click.y();
    const QRect places = free.marginsRemoved({gap, gap, gap, gap});
    return {within(click.x() - size.width() / 2, places.left(), places.right() + 1 - size.width()),
            within(y, places.top(), places.bottom() + 1 - size.height())};
}

}  // namespace sordin
