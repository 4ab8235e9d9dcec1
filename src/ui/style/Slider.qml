// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

T.Slider {
    id: control

    implicitWidth: 160
    implicitHeight: 24
    opacity: enabled ? 1 : 0.45
    // Keys and assistive technology move it by these, where it has no steps of its own.
    readonly property real nudge: stepSize > 0 ? stepSize : (to - from) / 20
    Accessible.onIncreaseAction: value = Math.min(to, value + nudge)
    Accessible.onDecreaseAction: value = Math.max(from, value - nudge)
    Keys.onPressed: event => {
        const by = { [Qt.Key_Right]: 1, [Qt.Key_Up]: 1, [Qt.Key_Left]: -1, [Qt.Key_Down]: -1,
                     [Qt.Key_PageUp]: 4, [Qt.Key_PageDown]: -4, [Qt.Key_Home]: -1000, [Qt.Key_End]: 1000 }[event.key];
        if (by !== undefined) {
            value = Math.max(from, Math.min(to, value + by * nudge));
            event.accepted = true;
        }
    }

    background: Rectangle {
        y: (control.height - height) / 2
        width: control.width
        height: 4
        radius: 2
        color: Theme.quaternary
        Rectangle {
            width: control.handle.x + control.handle.width / 2
            height: parent.height
            radius: 2
            color: Theme.accent
        }
    }
    handle: Rectangle {
        x: control.visualPosition * (control.width - width)
        y: (control.height - height) / 2
        width: 18
        height: 18
        radius: 9
        color: control.pressed ? "#eef0f3" : "white"
        border { width: 1; color: Theme.dark ? "#50000000" : "#50000000" }
        FocusFrame { control: control; radius: 13 }
    }
}
