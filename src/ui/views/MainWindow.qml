// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Sordin.Model
import Sordin.Style

T.ApplicationWindow {
    id: window
    required property SordinEngine engine
    readonly property string section: sections[sidebar.currentIndex].key
    readonly property var sections: [
        { key: "live", title: qsTr("Live"), symbol: "waveform", page: live },
        { key: "timeline", title: qsTr("Timeline"), symbol: "clock.arrow.circlepath", page: timeline },
        { key: "apps", title: qsTr("Apps"), symbol: "app.badge", page: apps },
        { key: "test", title: qsTr("Test Mode"), symbol: "testtube.2", page: test },
        { key: "settings", title: qsTr("Settings"), symbol: "gearshape", page: settings },
    ]

    // Whether the desktop shows the program's icon. The handler of `guideTurned` updates it.
    property bool iconIsShown: true

    // Set while this page is shown; it scrolls by itself.
    readonly property TimelinePage timelinePage: page.item as TimelinePage

    property real sidebarWidth: 180 // as dragged; may be beyond what is shown

    signal quit()
    signal guideTurned()

    title: qsTr("Sordin")
    width: 860
    height: 640
    minimumWidth: 780
    minimumHeight: 540
    color: Theme.window

    // Also while the guide is open.
    Shortcut { sequence: "Ctrl+Q"; context: Qt.ApplicationShortcut; onActivated: window.quit() }
    Shortcut { sequence: "Ctrl+W"; onActivated: window.close() }

    HistoryClearing { id: historyClearing; engine: window.engine }

    Component { id: live; LivePage { engine: window.engine } }
    Component { id: timeline; TimelinePage { engine: window.engine; clearing: historyClearing } }
    Component { id: apps; AppsPage { engine: window.engine } }
    Component { id: test; TestPage { engine: window.engine } }
    Component { id: settings; SettingsPage { engine: window.engine } }

    RowLayout {
        anchors.fill: parent
        spacing: 0
        // Keys have to scroll, because a page may have parts that cannot take the focus.
        Keys.onPressed: event => event.accepted = (window.timelinePage?.scrolling ?? scrolling).turn(event.key)
        Rectangle {
            id: side
            objectName: "side"
            Layout.fillHeight: true
            Layout.preferredWidth: Math.max(160, Math.min(window.sidebarWidth, 220))
            color: Theme.sidebar
            ListView {
                id: sidebar
                objectName: "sidebar"
                anchors { fill: parent; margins: 10; topMargin: 14 }
                spacing: 2
                interactive: false
                focus: true
                enabled: window.engine.onboardingComplete
                activeFocusOnTab: true
                keyNavigationEnabled: true
                model: window.sections
                Accessible.role: Accessible.List
                Accessible.name: qsTr("Pages")
                delegate: T.ItemDelegate {
                    id: row
                    required property var modelData
                    required property int index
                    width: ListView.view.width
                    height: 34
                    text: modelData.title
                    highlighted: ListView.isCurrentItem
                    focusPolicy: Qt.NoFocus  // the list has the focus
                    onClicked: ListView.view.currentIndex = index
                    Accessible.role: Accessible.ListItem
                    Accessible.name: text
                    Accessible.selected: highlighted
                    Accessible.onPressAction: if (enabled) clicked()
                    background: Rectangle {
                        radius: 8
                        color: row.highlighted ? Qt.alpha(Theme.accent, Theme.dark ? 0.28 : 0.16) : row.hovered ? Theme.hover : "transparent"
                        border { width: row.highlighted && sidebar.activeFocus && window.byKeyboard ? 2 : 0; color: Theme.accent }
                    }
                    contentItem: Row {
                        leftPadding: 10
                        spacing: 10
                        Symbol {
                            anchors.verticalCenter: parent.verticalCenter
                            name: row.modelData.symbol
                            size: 17
                            color: row.highlighted ? Theme.accent : Theme.secondary
                        }
                        Label { anchors.verticalCenter: parent.verticalCenter; text: row.text; wrapMode: Text.NoWrap; Accessible.ignored: true }
                    }
                }
            }
        }
        Rectangle {
            Layout.fillHeight: true
            implicitWidth: 1
            z: 1
            color: Theme.quaternary
            MouseArea {
                anchors { fill: parent; leftMargin: -4; rightMargin: -4 }
                cursorShape: Qt.SplitHCursor
                preventStealing: true
                onPositionChanged: event => window.sidebarWidth = mapToItem(side, event.x, 0).x
            }
        }
        Flickable {
            id: detail
            objectName: "detail"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            contentWidth: width
            contentHeight: window.timelinePage ? height : page.height + 48
            T.ScrollBar.vertical: ScrollBar { }
            Loader {
                id: page
                objectName: "page"
                x: 24
                y: window.timelinePage ? 0 : 24
                width: detail.width - 48
                height: window.timelinePage ? detail.height : item ? Math.max(item.implicitHeight, detail.height - 48) : 0
                // The page is not loaded behind the guide, because modality does not keep assistive
                // technology from using it.
                active: window.engine.onboardingComplete
                sourceComponent: window.sections[sidebar.currentIndex].page
                onSourceComponentChanged: detail.contentY = 0
            }
            FocusScroller { id: scrolling; area: detail }
        }
    }
    // Whether the focus last moved by keyboard and has to be visible.
    readonly property bool byKeyboard: activeFocusItem !== null && (activeFocusItem.focusReason === Qt.TabFocusReason || activeFocusItem.focusReason === Qt.BacktabFocusReason)

    OnboardingSheet {
        objectName: "sheet"
        engine: window.engine
        iconIsShown: window.iconIsShown
        lastStep: 3
        onStepChanged: window.guideTurned()
    }
}
