// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Model
import Sordin.Style

// The engine's state as text, and its color in the current appearance.
StatusLabel {
    readonly property color color: [Theme.gray, Theme.orange, Theme.yellow, Theme.green, Theme.red][tone]
}
