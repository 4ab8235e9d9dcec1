// SPDX-License-Identifier: MIT
#include "ui/panel_place.h"

#include <algorithm>

namespace sordin {

QPoint panelPlace(QPoint click, QSize size, QRect free) {
    constexpr int gap = 6;        // to the edges
    constexpr int halfIcon = 14;  // from the click to where the icon ends
    const auto within = [](int wanted, int first, int last) {
        return std::max(first, std::min(wanted, last));  // also where the panel does not fit
    };
    // A click outside of the free part was in a bar, next to which the panel stands.
    const bool below = click.y() < free.center().y();
    const int y = free.top() <= click.y() && click.y() <= free.bottom()
                      ? (below ? click.y() + halfIcon : click.y() - halfIcon - size.height())
                      : click.y();
    const QRect places = free.marginsRemoved({gap, gap, gap, gap});
    return {within(click.x() - size.width() / 2, places.left(), places.right() + 1 - size.width()),
            within(y, places.top(), places.bottom() + 1 - size.height())};
}

}  // namespace sordin
