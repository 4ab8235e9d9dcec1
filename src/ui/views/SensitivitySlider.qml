// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Model
import Sordin.Style

Slider {
    id: slider
    required property SordinEngine engine

    stepSize: 0.05
    value: engine.sensitivity
    onValueChanged: if (value !== engine.sensitivity) engine.sensitivity = value
    Accessible.name: qsTr("Sensitivity")

    // To multiples of 5 %, each the number nearest to it: a sum of steps may be shown as one percent less. The pointer is
    // free.
    function move(steps: int) {
        const twentieths = engine.sensitivity * 20;
        const next = steps > 0 ? Math.floor(twentieths + 1e-9) + steps : Math.ceil(twentieths - 1e-9) + steps;
        engine.sensitivity = Math.max(0, Math.min(next, 20)) / 20;
    }
}
