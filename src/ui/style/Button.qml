// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

T.Button {
    id: control
    property bool destructive: false

    implicitWidth: Math.max(implicitContentWidth + leftPadding + rightPadding, 64)
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    leftPadding: 14
    rightPadding: 14
    topPadding: 6
    bottomPadding: 6
    font: Theme.body
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: Text {
        text: control.text
        font: control.font
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        color: control.highlighted ? Theme.accentText : control.destructive ? Theme.red : Theme.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: 7
        color: control.highlighted ? Theme.accent : Theme.button
        border { width: control.highlighted ? 0 : 1; color: Theme.outline }
        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: control.down ? Theme.pressed : control.hovered ? Theme.hover : "transparent"
        }
        FocusFrame { control: control; radius: 10 }
    }
}
