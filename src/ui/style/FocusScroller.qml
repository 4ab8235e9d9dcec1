// SPDX-License-Identifier: MIT
import QtQuick

// Scrolls `area` to the focused item within it, and by pages.
QtObject {
    id: scroller
    required property Flickable area
    property Item beside: null  // an item outside the area that moves with its content
    readonly property Item focused: area ? area.Window.activeFocusItem : null
    readonly property int margin: 12

    onFocusedChanged: if (focused && area && contains(focused)) show(focused)

    function contains(item: Item): bool {
        for (let each = item; each; each = each.parent) {
            if (each === area.contentItem || each === beside) {
                return true;
            }
        }
        return false;
    }

    function show(item: Item) {
        const top = item.mapToItem(area.contentItem, 0, 0).y;
        if (top < area.contentY + margin) {
            scrollTo(top - margin);
        } else if (top + item.height > area.contentY + area.height - margin) {
            scrollTo(top + item.height + margin - area.height);
        }
    }

    // For Keys.onPressed: returns true if the key scrolls by a page.
    function turn(key: int): bool {
        const pages = key === Qt.Key_PageDown ? 1 : key === Qt.Key_PageUp ? -1 : 0;
        scrollTo(area.contentY + pages * (area.height - 4 * margin));
        return pages !== 0;
    }

    function scrollTo(y: real) {
        const first = area.originY - area.topMargin;
        const last = area.originY + area.contentHeight + area.bottomMargin - area.height;
        area.contentY = Math.max(first, Math.min(y, last));
    }
}
