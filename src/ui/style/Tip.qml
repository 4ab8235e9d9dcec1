// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

// A short text beside the point `at` in its parent and no wider than the parent: above the point if there is
// room, else `below` it.
Rectangle {
    id: tip
    required property point at
    required property string text
    property bool below: at.y - height - 8 < 0

    x: Math.max(0, Math.min(parent.width - width, at.x - width / 2))
    y: below ? at.y + 6 : at.y - height - 8
    z: 1
    width: Math.min(words.implicitWidth + 16, parent.width)
    height: words.implicitHeight + 8
    radius: 6
    color: Theme.text
    Label {
        id: words
        x: 8
        y: 4
        width: tip.width - 16
        text: tip.text
        font: Theme.caption
        color: Theme.card
    }
}
