// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Style

// One ad of the history.
Item {
    id: row
    required property int index
    required property string app
    required property bool real
    required property string details
    required property string duration
    required property int confidence
    required property string summary

    implicitHeight: content.implicitHeight + 20
    Accessible.role: Accessible.ListItem
    Accessible.name: summary

    Rectangle {  // keyboard focus
        anchors { fill: parent; leftMargin: 8; rightMargin: 8 }
        visible: row.ListView.isCurrentItem && row.ListView.view.activeFocus
        radius: 8
        color: "transparent"
        border { width: 2; color: Theme.accent }
    }
    Divider { visible: row.index > 0; x: 16; width: parent.width - 32; height: 1 }
    RowLayout {
        id: content
        anchors { left: parent.left; right: parent.right; margins: 16; verticalCenter: parent.verticalCenter }
        spacing: 10
        Item {
            implicitWidth: 22
            implicitHeight: 18
            Symbol { anchors.centerIn: parent; name: row.real ? "speaker.slash.fill" : "testtube.2"; color: row.real ? Theme.red : Theme.orange }
        }
        ColumnLayout {
            spacing: 2
            Label { text: row.app; Layout.fillWidth: true; maximumLineCount: 1; elide: Text.ElideRight; Accessible.ignored: true }
            Caption { text: row.details; Layout.fillWidth: true; Accessible.ignored: true }
        }
        ColumnLayout {
            spacing: 2
            Label { text: row.duration; Layout.alignment: Qt.AlignRight; wrapMode: Text.NoWrap; Accessible.ignored: true }
            Caption { text: qsTr("%1% conf.").arg(row.confidence); Layout.alignment: Qt.AlignRight; wrapMode: Text.NoWrap; Accessible.ignored: true }
        }
    }
}
