// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Model
import Sordin.Style

// Which applications the ads came from.
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
                required property int index
                required property string app
                required property string summary
                required property real share
                required property string details
                spacing: 4
                Divider { visible: index > 0; Layout.bottomMargin: 6 }
                RowLayout {
                    Label { text: app; font: Theme.headline; Layout.fillWidth: true; maximumLineCount: 1; elide: Text.ElideRight }
                    Label { text: summary; wrapMode: Text.NoWrap }
                }
                Gauge { value: share; label: app; Layout.fillWidth: true }
                Caption { text: details }
            }
        }
    }
    Caption {
        text: qsTr("The source app is the process currently producing audio output (macOS 14.2+), otherwise the frontmost app.")
        Layout.fillWidth: true
    }
    Item { Layout.fillHeight: true }
}
