// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

Text {
    property bool figures: false // digits of one width, so that a changing number does not move

    font: Theme.body
    color: Theme.text
    wrapMode: Text.Wrap
    textFormat: Text.PlainText
    renderType: Text.NativeRendering
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
