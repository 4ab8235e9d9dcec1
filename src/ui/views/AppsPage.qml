// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Model
import Sordin.Style

// Statistics and options per application.
ColumnLayout {
    id: page
    required property SordinEngine engine
    spacing: 16

    AppStatsModel { id: stats; engine: page.engine }

    Card {
        title: qsTr("Per-app statistics")
        Label {
            objectName: "noStatistics"
            visible: stats.count === 0
            text: qsTr("Statistics appear after the first detected ad.")
            color: Theme.secondary
        }
        Repeater {
            objectName: "apps"
            model: stats
            ColumnLayout {
                id: row
                required property int index
                required property string app
                required property string summary
                required property real share
                required property string details
                required property bool ignored
                spacing: 4
                TapHandler { acceptedButtons: Qt.RightButton; onTapped: options.popup() }
                Divider { visible: row.index > 0; Layout.bottomMargin: 6 }
                RowLayout {
                    Label { text: row.app; font: Theme.headline; Layout.fillWidth: true; maximumLineCount: 1; elide: Text.ElideRight }
                    Label { text: row.summary; wrapMode: Text.NoWrap }
                    Button {
                        id: more
                        objectName: "options"
                        text: "…"
                        leftPadding: 4
                        rightPadding: 4
                        implicitWidth: 36
                        Accessible.role: Accessible.ButtonMenu
                        Accessible.name: qsTr("Options for %1").arg(row.app)
                        onClicked: options.popup(more, more.width - options.implicitWidth, more.height + 2)
                    }
                }
                Gauge { visible: row.summary !== ""; value: row.share; label: row.app; Layout.fillWidth: true }
                Caption {
                    objectName: "appDetails"
                    text: [row.details, row.ignored ? qsTr("Not listened to") : ""].filter(each => each !== "").join(" · ")
                    Layout.fillWidth: true
                }
                Menu {
                    id: options
                    MenuItem {
                        objectName: "ignore"
                        text: row.ignored ? qsTr("Listen to this application") : qsTr("Do not listen to this application")
                        onTriggered: page.engine.setIgnored(row.app, !row.ignored)
                    }
                }
            }
        }
    }
    Caption {
        text: qsTr("The source app is the process currently producing audio output (macOS 14.2+), otherwise the frontmost app.")
        Layout.fillWidth: true
    }
    Item { Layout.fillHeight: true }
}
