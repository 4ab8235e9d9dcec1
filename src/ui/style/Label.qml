// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

Text {
    font: Theme.body
    color: Theme.text
    wrapMode: Text.Wrap
    horizontalAlignment: Text.AlignLeft  // also for names in Arabic or Hebrew
    textFormat: Text.PlainText
    renderType: Text.NativeRendering
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
