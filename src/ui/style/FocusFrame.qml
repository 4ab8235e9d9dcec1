// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

// Marks the control with keyboard focus.
Rectangle {
    required property Item control
    property int gap: 2

    anchors { fill: parent; margins: -gap - 2 }
    visible: control.visualFocus
    color: "transparent"
    border { width: 2; color: Theme.accent }
}
