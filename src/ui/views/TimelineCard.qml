// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Model
import Sordin.Style

// The ads of the last hours as marks on a bar.
Card {
    id: card
    required property AdHistoryModel events
    property int hours: 6
    title: qsTr("Detected-ad timeline")

    RowLayout {
        spacing: 10
        Label { text: qsTr("Range"); wrapMode: Text.NoWrap; Accessible.ignored: true }
        SegmentedPicker {
            objectName: "range"
            label: qsTr("Range")
            options: [{ text: qsTr("1 h"), value: 1 }, { text: qsTr("6 h"), value: 6 }, { text: qsTr("24 h"), value: 24 }]
            value: card.hours
            onPicked: value => card.hours = value
        }
    }
    TimelineStrip {
        id: strip
        objectName: "strip"
        readonly property int row: pointer.hovered ? rowAt(pointer.point.position.x) : -1
        z: 1  // the tip covers the items below
        Layout.fillWidth: true
        implicitHeight: 34
        events: card.events
        hours: card.hours
        ground: Theme.quaternary
        real: Theme.red
        test: Theme.orange
        Accessible.role: Accessible.Chart
        Accessible.name: qsTr("Ads of the last %1 hours").arg(card.hours)

        HoverHandler { id: pointer }
        Tip {
            objectName: "tip"
            visible: strip.row >= 0
            at: Qt.point(pointer.point.position.x, strip.height)
            below: true  // must not cover the marks
            text: card.events.summary(strip.row)
        }
    }
    RowLayout {
        Caption { objectName: "ago"; text: qsTr("%1 h ago").arg(card.hours); Layout.fillWidth: true }
        Caption { text: qsTr("now") }
    }
    RowLayout {
        spacing: 6
        Repeater {
            model: [{ text: qsTr("Muted"), color: Theme.red }, { text: qsTr("Test / simulated"), color: Theme.orange }]
            RowLayout {
                required property var modelData
                spacing: 6
                Layout.rightMargin: 12
                Rectangle { implicitWidth: 10; implicitHeight: 10; radius: 3; color: modelData.color }
                Caption { text: modelData.text }
            }
        }
    }
}
