// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

// Indicates an activity of unknown duration.
Item {
    id: spinner
    implicitWidth: 18
    implicitHeight: 18
    Accessible.role: Accessible.Animation
    Accessible.name: qsTr("In progress")

    Repeater {
        model: 8
        Rectangle {
            required property int index
            readonly property real angle: index * Math.PI / 4
            x: 8 + 6 * Math.sin(angle) - width / 2 + 1
            y: 8 - 6 * Math.cos(angle) - height / 2 + 1
            width: 3
            height: 3
            radius: 1.5
            color: Theme.secondary
            opacity: 0.2 + 0.1 * ((index - turn.step + 8) % 8)
        }
    }
    Timer {
        id: turn
        property int step: 0
        interval: 120
        repeat: true
        running: spinner.visible && spinner.Window.visibility !== Window.Hidden && !Theme.still
        onTriggered: step = (step + 1) % 8
    }
}
