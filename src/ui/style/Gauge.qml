// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

// A bar for a value from 0 to 1.
Rectangle {
    id: gauge
    required property real value
    property string label

    implicitWidth: 120
    implicitHeight: 6
    radius: height / 2
    color: Theme.quaternary
    Accessible.role: Accessible.ProgressBar
    Accessible.name: label
    Accessible.description: Math.trunc(value * 100) + "%"

    Rectangle {
        width: parent.width * Math.max(0, Math.min(1, gauge.value))
        height: parent.height
        radius: parent.radius
        color: Theme.accent
        Behavior on width { NumberAnimation { duration: Theme.quick } }
    }
}
