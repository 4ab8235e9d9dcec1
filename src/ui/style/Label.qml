// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

Text {
    font: Theme.body
    color: Theme.text
    wrapMode: Text.Wrap
    horizontalAlignment: Text.AlignLeft // names in Arabic or Hebrew too
    textFormat: Text.PlainText
    renderType: Text.NativeRendering
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
