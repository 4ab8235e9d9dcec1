// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

T.CheckBox {
    id: control

    implicitWidth: implicitContentWidth
    implicitHeight: Math.max(22, implicitContentHeight)
    font: Theme.body
    Accessible.name: text
    Accessible.onPressAction: if (enabled) toggle()  // Qt 6.8 by itself reports a click that changes nothing

    indicator: Rectangle {
        width: 18
        height: 18
        radius: 5
        y: (control.height - height) / 2
        color: control.checked ? Theme.accent : Theme.button
        border { width: control.checked ? 0 : 1; color: Theme.gray }
        Text {
            anchors.centerIn: parent
            visible: control.checked
            text: "✓"
            font { family: Theme.body.family; pixelSize: 13; bold: true }
            color: Theme.accentText
        }
        FocusFrame { control: control; radius: 8 }
    }
    contentItem: Text {
        text: control.text
        font: control.font
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        color: Theme.text
        leftPadding: 26
        verticalAlignment: Text.AlignVCenter
    }
}
