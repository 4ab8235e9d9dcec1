// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Model
import Sordin.Style

Switch {
    required property SordinEngine engine

    text: qsTr("Enabled")
    checked: engine.isEnabled
    // Assistive technology changes `checked` without a click.
    onCheckedChanged: {
        if (checked !== engine.isEnabled) {
            engine.isEnabled = checked;
        }
        checked = Qt.binding(() => engine.isEnabled);
    }
}
