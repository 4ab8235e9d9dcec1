// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Sordin.Model
import Sordin.Style

// The record of the ads.
ColumnLayout {
    id: page
    required property SordinEngine engine
    property int hours: 6
    spacing: 16

    SummaryTexts { id: summary; engine: page.engine }
    AdHistoryModel { id: events; engine: page.engine }

    RowLayout {
        spacing: 40
        Repeater {
            model: [
                { figure: summary.adsToday, caption: qsTr("Ads today") },
                { figure: summary.mutedToday, caption: qsTr("Muted today") },
                { figure: summary.allTimeMuted, caption: qsTr("All time muted") },
            ]
            ColumnLayout {
                required property var modelData
                spacing: 0
                Label { text: modelData.figure; font: Theme.largeTitle; wrapMode: Text.NoWrap }
                Caption { text: modelData.caption }
            }
        }
    }
    Card {
        title: qsTr("Detected-ad timeline")
        SegmentedPicker {
            objectName: "range"
            label: qsTr("Range")
            options: [{ text: qsTr("1 h"), value: 1 }, { text: qsTr("6 h"), value: 6 }, { text: qsTr("24 h"), value: 24 }]
            value: page.hours
            onPicked: value => page.hours = value
        }
        TimelineStrip {
            id: strip
            objectName: "strip"
            readonly property int row: pointer.hovered ? rowAt(pointer.point.position.x) : -1
            Layout.fillWidth: true
            implicitHeight: 34
            events: events
            hours: page.hours
            ground: Theme.quaternary
            real: Theme.red
            test: Theme.orange
            Accessible.role: Accessible.Chart
            Accessible.name: qsTr("Ads of the last %1 hours").arg(page.hours)

            HoverHandler { id: pointer }
            Tip {
                readonly property var index: events.index(strip.row, 0)
                visible: strip.row >= 0
                at: Qt.point(pointer.point.position.x, 0)
                text: visible ? events.data(index, AdHistoryModel.appRole) + ", " + events.data(index, AdHistoryModel.durationRole)
                                + " · " + events.data(index, AdHistoryModel.detailsRole) : ""
            }
        }
        RowLayout {
            Caption { objectName: "ago"; text: qsTr("%1 h ago").arg(page.hours); Layout.fillWidth: true }
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
    Card {
        Label {
            objectName: "noAds"
            visible: events.count === 0
            text: qsTr("No ads detected yet.")
            color: Theme.secondary
        }
        // Of five hundred rows only those in sight exist.
        ListView {
            id: list
            objectName: "list"
            visible: events.count > 0
            Layout.fillWidth: true
            implicitHeight: Math.min(contentHeight, 420)
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            model: events
            reuseItems: true
            activeFocusOnTab: true
            keyNavigationEnabled: true
            T.ScrollBar.vertical: ScrollBar { }
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Detected ads")
            delegate: AdRow { width: ListView.view.width - 12 }
        }
    }
    RowLayout {
        spacing: 12
        CheckBox {
            objectName: "showTests"
            text: qsTr("Show test events")
            checked: events.showTests
            onCheckedChanged: events.showTests = checked
        }
        Item { Layout.fillWidth: true }
        RowLayout {
            objectName: "undoBar"
            visible: events.canUndo
            spacing: 8
            Caption { text: qsTr("The history was cleared."); Accessible.role: Accessible.AlertMessage }
            Button { id: undo; objectName: "undo"; text: qsTr("Undo"); onClicked: events.undoClear() }
        }
        Button {
            objectName: "clear"
            text: qsTr("Clear")
            destructive: true
            enabled: events.canClear
            onClicked: {
                events.clear();
                undo.forceActiveFocus(Qt.TabFocusReason); // this button can no longer have it
            }
        }
    }
    Item { Layout.fillHeight: true }
}
