// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Model
import Sordin.Style

// The detector's current state.
ColumnLayout {
    id: page
    required property SordinEngine engine
    spacing: 16

    EngineState { id: status; engine: page.engine }

    Card {
        objectName: "statusCard"
        GridLayout {
            id: statusRow
            // With large fonts the button goes below and the status shrinks a little, so that it stays on one line.
            readonly property bool crowded: restore.visible && title.advanceWidth + restore.implicitWidth + enabledSwitch.implicitWidth + 44 + 3 * columnSpacing > width
            columnSpacing: 14
            rowSpacing: 8
            TextMetrics { id: title; font: Theme.title; text: status.text }
            Item {
                implicitWidth: 44
                implicitHeight: 44
                Rectangle { anchors.fill: parent; radius: 12; color: status.color; opacity: 0.14 }
                Symbol {
                    objectName: "statusSymbol"
                    anchors.centerIn: parent
                    size: 34
                    name: page.engine.adActive ? "speaker.slash.fill" : "speaker.wave.2.fill"
                    color: status.color
                }
            }
            ColumnLayout {
                spacing: 2
                // The height is the same with and without a source, so that nothing moves when an ad begins.
                Layout.minimumHeight: title.height + 2 + source.implicitHeight
                Label {
                    id: statusText
                    objectName: "statusText"
                    text: status.text
                    font: Theme.title
                    wrapMode: status.failed ? Text.Wrap : Text.NoWrap
                    fontSizeMode: status.failed ? Text.FixedSize : Text.HorizontalFit // failures have whole sentences
                    minimumPointSize: 0.8 * Theme.title.pointSize
                    Layout.fillWidth: true
                    Accessible.role: Accessible.AlertMessage
                }
                Label {
                    id: source
                    objectName: "source"
                    visible: page.engine.adActive
                    text: qsTr("Source: %1").arg(page.engine.currentApp)
                    color: Theme.secondary
                    Layout.fillWidth: true
                    maximumLineCount: 1
                    elide: Text.ElideRight
                }
                Label {
                    objectName: "call"
                    visible: text !== "" && !source.visible
                    text: status.callText
                    color: Theme.secondary
                    Layout.fillWidth: true
                    maximumLineCount: 1
                    elide: Text.ElideRight
                }
            }
            Button {
                id: restore
                objectName: "restore"
                Layout.row: statusRow.crowded ? 1 : 0
                Layout.column: statusRow.crowded ? 1 : 2
                Layout.columnSpan: statusRow.crowded ? 3 : 1
                Layout.alignment: Qt.AlignRight
                visible: page.engine.adFaded
                text: qsTr("Restore Volume")
                onClicked: {
                    if (visualFocus) {  // the button is about to hide
                        nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason);
                    }
                    page.engine.restoreVolume();
                }
            }
            EnabledSwitch { id: enabledSwitch; objectName: "enabled"; engine: page.engine; Layout.column: 3; Layout.alignment: Qt.AlignVCenter }
        }
        RowLayout {
            objectName: "trouble"
            visible: !page.engine.screenAccess || status.failed
            spacing: 8
            Label {
                objectName: "permissionNotice"
                visible: !page.engine.screenAccess
                text: qsTr("Screen & System Audio Recording permission is required to hear system audio.")
                font: Theme.callout
                Layout.fillWidth: true
            }
            Button {
                objectName: "grant"
                visible: !page.engine.screenAccess
                text: qsTr("Grant…")
                onClicked: {
                    page.engine.requestScreenAccess();
                    settings.opened(page.engine.openSettings("Privacy_ScreenCapture"));
                }
            }
            Item { visible: page.engine.screenAccess; Layout.fillWidth: true }
            Button { objectName: "retry"; text: qsTr("Retry"); onClicked: page.engine.startCapture() }
        }
        SettingsHint { id: settings; anchor: "Privacy_ScreenCapture"; granted: page.engine.screenAccess }
    }
    Card {
        ConfidenceBar { Layout.fillWidth: true; confidence: page.engine.confidence; threshold: page.engine.threshold }
        RowLayout {
            Label {
                objectName: "confidence"
                text: Math.trunc(page.engine.confidence * 100) + "%"
                font: Theme.caption
                Layout.fillWidth: true
            }
            Caption { objectName: "threshold"; text: qsTr("Mute threshold %1%").arg(Math.trunc(page.engine.threshold * 100)) }
        }
        RowLayout {
            spacing: 6
            Rectangle { implicitWidth: 18; implicitHeight: 2; color: Theme.accent }
            Caption { text: qsTr("Confidence"); Layout.rightMargin: 12 }
            Row {
                spacing: 3
                Repeater {
                    model: 3
                    Rectangle { width: 4; height: 1; color: chart.rule }
                }
            }
            Caption { text: qsTr("Threshold") }
        }
        TrailChart {
            id: chart
            objectName: "chart"
            Layout.fillWidth: true
            implicitHeight: 140
            engine: page.engine
            line: Theme.accent
            rule: Qt.alpha(Theme.red, 0.7)
            grid: Theme.quaternary
            label: Theme.secondary
            font: Theme.caption
            highlighted: pointer.hovered ? rowAt(pointer.point.position.x) : -1
            Accessible.role: Accessible.Chart
            Accessible.name: qsTr("Confidence over time")

            HoverHandler { id: pointer }
            Tip {
                readonly property var point: { page.engine.confidence; return chart.point(chart.highlighted); }
                visible: point.time !== undefined
                at: Qt.point(point.x ?? 0, point.y ?? 0)
                text: visible ? qsTr("%1% at %2").arg(Math.trunc(point.confidence * 100)).arg(point.time) : ""
            }
        }
    }
    Card {
        RowLayout {
            spacing: 12
            Label { text: qsTr("Sensitivity"); wrapMode: Text.NoWrap; Accessible.ignored: true }
            Caption { text: qsTr("Fewer mutes"); wrapMode: Text.NoWrap }
            SensitivitySlider { objectName: "sensitivity"; engine: page.engine; Layout.fillWidth: true }
            Caption { text: qsTr("More mutes"); wrapMode: Text.NoWrap }
        }
        Caption { text: qsTr("Higher sensitivity lowers the confidence needed to mute."); Layout.fillWidth: true }
    }
    Card {
        objectName: "transcriptCard"
        visible: page.engine.transcribing
        title: qsTr("On-device transcript (suspicious segment)")
        LatestWords {
            objectName: "transcript"
            readonly property bool waiting: page.engine.transcript === ""
            words: waiting ? qsTr("Listening…") : page.engine.transcript
            font: waiting ? Theme.callout : Theme.body
            color: waiting ? Theme.secondary : Theme.text
            Layout.fillWidth: true
        }
    }
    Item { Layout.fillHeight: true }
}
