// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Model
import Sordin.Style

// The current ad confidence relative to the threshold.
ConfidenceLevel {
    id: bar
    implicitWidth: 120
    implicitHeight: 8
    over: confidence >= threshold
    track: Theme.quaternary
    level: Theme.accent
    reached: Theme.red
    tick: Theme.text
    duration: Theme.gentle
    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Ad confidence")
    Accessible.description: qsTr("%1%, mutes from %2%").arg(Math.trunc(confidence * 100)).arg(Math.trunc(threshold * 100))
}
