// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

T.Menu {
    id: menu
    margins: 6
    padding: 5
    implicitWidth: contentWidth + leftPadding + rightPadding
    implicitHeight: contentHeight + topPadding + bottomPadding
    contentWidth: {
        let widest = 0;
        for (let i = 0; i < count; ++i) {
            widest = Math.max(widest, itemAt(i).implicitWidth);
        }
        return widest;
    }
    contentItem: ListView {
        implicitHeight: contentHeight
        model: menu.contentModel
        currentIndex: menu.currentIndex
        interactive: false
    }
    background: Rectangle {
        radius: 10
        color: Theme.card
        border { width: 1; color: Theme.outline }
    }
}
