// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

T.Switch {
    id: control
    property bool labelHidden: false

    implicitWidth: labelHidden ? knobTrack.width : implicitContentWidth
    implicitHeight: labelHidden ? 24 : Math.max(24, implicitContentHeight)
    font: Theme.body
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.onPressAction: if (enabled) toggle()  // Qt 6.8 by itself reports a click that changes nothing

    indicator: Rectangle {
        id: knobTrack
        width: 38
        height: 22
        radius: 11
        x: control.labelHidden ? 0 : control.width - width
        y: (control.height - height) / 2
        color: control.checked ? Theme.accent : Theme.edge
        Behavior on color { ColorAnimation { duration: Theme.quick } }
        Rectangle {
            x: 2 + control.visualPosition * 16
            y: 2
            width: 18
            height: 18
            radius: 9
            color: "white"
            Behavior on x { enabled: !control.down; NumberAnimation { duration: Theme.quick; easing.type: Easing.OutCubic } }
        }
        FocusFrame { control: control; radius: 15 }
    }
    contentItem: Text {
        text: control.labelHidden ? "" : control.text
        font: control.font
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        color: Theme.text
        wrapMode: Text.Wrap
        rightPadding: 48
        verticalAlignment: Text.AlignVCenter
    }
}
