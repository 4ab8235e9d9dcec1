// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

T.MenuItem {
    id: control
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 7
    leftPadding: 12
    rightPadding: 12
    font: Theme.body
    Accessible.name: text
    Accessible.onPressAction: {
        if (enabled) {
            menu.dismiss();
            triggered();
        }
    }

    contentItem: Text {
        text: control.text
        font: control.font
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        color: control.highlighted ? Theme.accentText : Theme.text
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: 6
        color: control.highlighted ? Theme.accent : "transparent"
    }
}
