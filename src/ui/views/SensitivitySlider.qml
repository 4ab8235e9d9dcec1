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

    // Moves to multiples of 5 %, each as the nearest floating-point number: accumulated steps could display
    // one percent less. The pointer can select any value.
    function move(steps: int) {
        const twentieths = engine.sensitivity * 20;
        const next = steps > 0 ? Math.floor(twentieths + 1e-9) + steps : Math.ceil(twentieths - 1e-9) + steps;
        engine.sensitivity = Math.max(0, Math.min(next, 20)) / 20;
    }
}
