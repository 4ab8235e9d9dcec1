// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Sordin.Model
import Sordin.Style

// The ad history. The list scrolls together with everything above it; the buttons stay below.
Item {
    id: page
    required property SordinEngine engine
    required property HistoryClearing clearing
    readonly property FocusScroller scrolling: FocusScroller { area: list; beside: head }

    SummaryTexts { id: summary; engine: page.engine }
    AdHistoryModel { id: events; engine: page.engine }

    Item {
        anchors { fill: parent; bottomMargin: controls.height + 40 }
        clip: true
        // A sibling of the list instead of its header: in the header's focus scope, keyboard navigation would
        // get stuck.
        ColumnLayout {
            id: head
            y: (list.headerItem?.y ?? 0) - list.contentY
            z: 1
            width: parent.width
            spacing: 16
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
            TimelineCard { events: events }
            Card {
                visible: events.count === 0
                Label { objectName: "noAds"; text: qsTr("No ads detected yet."); color: Theme.secondary }
            }
        }
        // Only the visible rows of up to five hundred exist.
        ListView {
            id: list
            objectName: "list"
            anchors.fill: parent
            topMargin: 24
            boundsBehavior: Flickable.StopAtBounds
            model: events
            reuseItems: true
            activeFocusOnTab: count > 0
            keyNavigationEnabled: true
            T.ScrollBar.vertical: ScrollBar { parent: page; x: page.width + 12; height: list.height }
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Detected ads")
            header: Item {
                width: 1
                height: head.height + 22
                // Otherwise the list keeps its first row in place.
                onHeightChanged: page.scrolling.scrollTo(-Infinity)
            }
            footer: Item { width: 1; height: 6 }
            delegate: AdRow { width: ListView.view.width }

            Rectangle {  // the card behind the rows
                parent: list.contentItem
                z: -1
                visible: list.count > 0
                readonly property real above: head.height + 16
                y: (list.headerItem?.y ?? 0) + above
                width: list.width
                height: list.contentHeight - above
                radius: 12
                color: Theme.card
                border { width: 1; color: Theme.quaternary }
            }
        }
    }
    RowLayout {
        id: controls
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; bottomMargin: 24 }
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
            visible: page.clearing.canUndo
            spacing: 8
            Caption { text: qsTr("The history was cleared."); Accessible.role: Accessible.AlertMessage }
            Button { id: undo; objectName: "undo"; text: qsTr("Undo"); onClicked: page.clearing.undo() }
        }
        Button {
            objectName: "clear"
            text: qsTr("Clear")
            destructive: true
            enabled: page.clearing.canClear
            onClicked: {
                page.clearing.clear();
                undo.forceActiveFocus(Qt.TabFocusReason);  // this button cannot keep the focus
            }
        }
    }
}
