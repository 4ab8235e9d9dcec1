// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Style

RowLayout {
    id: row
    required property string title
    required property bool granted
    signal wanted()
    spacing: 10

    Symbol { name: row.granted ? "checkmark.circle.fill" : "exclamationmark.circle"; color: row.granted ? Theme.green : Theme.orange }
    Label {
        text: row.title
        Layout.fillWidth: true
        Accessible.description: row.granted ? qsTr("Permission granted") : qsTr("Not granted")
    }
    Button { objectName: "grant"; visible: !row.granted; text: qsTr("Grant…"); onClicked: row.wanted() }
}
