// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import QtQuick.Window
import Sordin.Model
import Sordin.Style

// The panel that opens at the icon. It closes when it loses the focus.
Window {
    id: panel
    required property SordinEngine engine
    signal openMain()
    signal quit()

    title: qsTr("Sordin")
    // A fixed size, so that tiling compositors leave the window floating. All bounds depend on the content;
    // depending on `height` would be a binding loop.
    readonly property int contentHeight: Math.ceil(column.implicitHeight) + 24
    width: 290
    minimumWidth: 290
    maximumWidth: 290
    height: contentHeight
    minimumHeight: contentHeight
    maximumHeight: contentHeight
    color: "transparent"

    Shortcut { sequence: "Ctrl+Q"; onActivated: panel.quit() }

    EngineState { id: status; engine: panel.engine }
    SummaryTexts { id: summary; engine: panel.engine }

    Rectangle {
        anchors.fill: parent
        radius: 12
        color: Theme.window
        border { width: 1; color: Theme.outline }
        focus: true
        Keys.onEscapePressed: panel.close()

        ColumnLayout {
            id: column
            x: 12
            y: 12
            width: 266  // constant, because wrapped texts depend on it
            spacing: 10
            RowLayout {
                spacing: 8
                Rectangle { implicitWidth: 10; implicitHeight: 10; radius: 5; color: status.color; Accessible.ignored: true }
                Label {
                    objectName: "statusText"
                    text: status.text
                    font: Theme.headline
                    Layout.fillWidth: true
                    Accessible.role: Accessible.AlertMessage
                }
                EnabledSwitch { objectName: "enabled"; engine: panel.engine; labelHidden: true }
            }
            Caption { objectName: "call"; visible: text !== ""; text: status.callText; Layout.fillWidth: true }
            Button {
                objectName: "restore"
                visible: panel.engine.adFaded
                text: qsTr("Restore Volume")
                Layout.fillWidth: true
                onClicked: {
                    if (visualFocus) {  // the button is about to hide
                        nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason);
                    }
                    panel.engine.restoreVolume();
                }
            }
            ConfidenceBar { objectName: "level"; Layout.fillWidth: true; confidence: panel.engine.confidence; threshold: panel.engine.threshold }
            ColumnLayout {
                spacing: 4
                RowLayout {
                    Label { text: qsTr("Sensitivity"); font: Theme.callout; Layout.fillWidth: true; Accessible.ignored: true }
                    Caption { objectName: "sensitivityText"; text: Math.trunc(panel.engine.sensitivity * 100) + "%" }
                }
                SensitivitySlider { objectName: "sensitivity"; engine: panel.engine; Layout.fillWidth: true }
            }
            Caption { objectName: "today"; text: summary.today; Layout.fillWidth: true }
            Divider { }
            RowLayout {
                Button { objectName: "open"; text: qsTr("Open Sordin"); onClicked: { panel.openMain(); panel.close(); } }
                Item { Layout.fillWidth: true }
                Button { objectName: "quit"; text: qsTr("Quit"); onClicked: panel.quit() }
            }
        }
    }
}
