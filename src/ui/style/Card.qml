// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Style

// A framed group with an optional title.
Rectangle {
    id: card
    property string title
    default property alias content: column.data

    Layout.fillWidth: true
    implicitWidth: column.implicitWidth + 32
    implicitHeight: column.implicitHeight + 32
    radius: 12
    color: Theme.card
    border { width: 1; color: Theme.quaternary }
    Accessible.role: Accessible.Grouping
    Accessible.name: title

    ColumnLayout {
        id: column
        anchors { fill: parent; margins: 16 }
        spacing: 10
        Label {
            visible: text !== ""
            text: card.title
            font: Theme.headline
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
    }
}
