// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Model
import Sordin.Style

Slider {
    required property SordinEngine engine

    stepSize: 0.05 // for keys; the pointer is free
    value: engine.sensitivity
    onValueChanged: if (value !== engine.sensitivity) engine.sensitivity = value
    Accessible.name: qsTr("Sensitivity")
}
