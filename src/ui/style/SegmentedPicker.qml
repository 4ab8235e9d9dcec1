// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Sordin.Style

// Selects one of a few values. `options` is a list of { text, value }.
Rectangle {
    id: picker
    required property var options
    required property var value
    required property string label
    signal picked(var value)

    implicitWidth: 220
    implicitHeight: Math.round(28 * Theme.scale)
    radius: 8
    color: Theme.quaternary
    Accessible.role: Accessible.Grouping
    Accessible.name: label

    Row {
        anchors { fill: parent; margins: 2 }
        Repeater {
            id: choices
            model: picker.options
            T.RadioButton {
                id: choice
                required property var modelData
                required property int index

                width: (picker.width - 4) / picker.options.length
                height: picker.height - 4
                text: modelData.text
                font: Theme.callout
                checked: picker.value === modelData.value
                focusPolicy: checked ? Qt.StrongFocus : Qt.ClickFocus  // one tab stop for the whole picker
                Accessible.name: picker.label + ": " + text
                Accessible.onPressAction: picker.picked(modelData.value)
                Accessible.onToggleAction: picker.picked(modelData.value)
                onCheckedChanged: if (checked && picker.value !== modelData.value) picker.picked(modelData.value)
                Keys.onLeftPressed: step(-1)
                Keys.onRightPressed: step(1)
                function step(by: int) {
                    const next = choices.itemAt(index + by);
                    if (next !== null) {
                        next.forceActiveFocus(Qt.TabFocusReason);
                        picker.picked(next.modelData.value);
                    }
                }
                background: Rectangle {
                    radius: 6
                    border { width: choice.checked ? 1 : 0; color: Theme.edge }
                    color: choice.checked ? (Theme.dark ? "#5a5e67" : "#ffffff") : choice.hovered ? Theme.hover : "transparent"
                    FocusFrame { control: choice; radius: 7; gap: -2 }
                }
                contentItem: Text {
                    text: choice.text
                    font: choice.font
                    renderType: Text.NativeRendering
                    color: Theme.text
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
            }
        }
    }
}
