// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

T.ScrollBar {
    id: control
    implicitWidth: 12
    padding: 3
    minimumSize: 0.08
    policy: T.ScrollBar.AsNeeded
    visible: size < 1

    contentItem: Rectangle {
        implicitWidth: 6
        radius: 3
        color: Theme.secondary
        opacity: control.pressed ? 0.8 : control.hovered ? 0.6 : 0.35
    }
}
