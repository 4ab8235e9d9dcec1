// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Style

Rectangle {
    Layout.fillWidth: true
    implicitHeight: 1
    color: Theme.quaternary
    Accessible.ignored: true
}
