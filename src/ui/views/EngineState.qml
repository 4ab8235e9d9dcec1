// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Model
import Sordin.Style

// The engine's state in words, and its colour in the current look.
StatusLabel {
    readonly property color color: [Theme.gray, Theme.orange, Theme.yellow, Theme.green, Theme.red][tone]
}
