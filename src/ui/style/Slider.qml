// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

T.Slider {
    id: control

    implicitWidth: 160
    implicitHeight: 24
    opacity: enabled ? 1 : 0.45
    // The names under which assistive technology reads the range.
    readonly property real minimumValue: from
    readonly property real maximumValue: to
    Accessible.onIncreaseAction: move(1)
    Accessible.onDecreaseAction: move(-1)
    Keys.onPressed: event => {
        const steps = {
            [Qt.Key_Left]: -1, [Qt.Key_Down]: -1, [Qt.Key_Right]: 1, [Qt.Key_Up]: 1,
            [Qt.Key_PageDown]: -4, [Qt.Key_PageUp]: 4, [Qt.Key_Home]: -1000, [Qt.Key_End]: 1000,
        }[event.key];
        event.accepted = steps !== undefined;
        if (event.accepted) {
            move(steps);
        }
    }
    // Changes the value in steps, because an assignment would break its binding.
    function move(steps: int) {
        for (let i = 0; i < Math.abs(steps) && value !== (steps > 0 ? to : from); ++i) {
            if (steps > 0) {
                increase();
            } else {
                decrease();
            }
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
        border { width: 1; color: Theme.edge }
        FocusFrame { control: control; radius: 13 }
    }
}
