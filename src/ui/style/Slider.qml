// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

T.Slider {
    id: control

    implicitWidth: 160
    implicitHeight: 24
    opacity: enabled ? 1 : 0.45
    Accessible.onIncreaseAction: increase()
    Accessible.onDecreaseAction: decrease()
    // Steps, not assignments, which would end what the value is bound to.
    Keys.onPressed: event => {
        const [steps, by] = {
            [Qt.Key_PageUp]: [4, 1], [Qt.Key_PageDown]: [4, -1], [Qt.Key_Home]: [1000, -1], [Qt.Key_End]: [1000, 1],
        }[event.key] ?? [0, 0];
        event.accepted = steps > 0;
        for (let i = 0; i < steps && value !== (by > 0 ? to : from); ++i) {
            if (by > 0) {
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
