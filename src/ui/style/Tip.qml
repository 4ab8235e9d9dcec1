// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

// A few words beside a place in its parent, within it.
Rectangle {
    id: tip
    required property point at
    required property string text

    x: Math.max(0, Math.min(parent.width - width, at.x - width / 2))
    y: at.y - height - 8 >= 0 ? at.y - height - 8 : at.y + 12
    z: 1
    width: words.implicitWidth + 16
    height: words.implicitHeight + 8
    radius: 6
    color: Theme.text
    Label {
        id: words
        anchors.centerIn: parent
        text: tip.text
        font: Theme.caption
        color: Theme.card
        wrapMode: Text.NoWrap
    }
}
