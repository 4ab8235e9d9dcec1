// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Model
import Sordin.Style

// Dry run of the detector, and a simulated ad to test muting.
ColumnLayout {
    id: page
    required property SordinEngine engine
    spacing: 16

    SignalsModel { id: signalRows; engine: page.engine }

    Card {
        Switch {
            objectName: "testMode"
            text: qsTr("Dry run: detect and log ads, but never change the volume")
            Layout.fillWidth: true
            checked: page.engine.testMode
            onCheckedChanged: {
                if (checked !== page.engine.testMode) {
                    page.engine.testMode = checked;
                }
                checked = Qt.binding(() => page.engine.testMode);
            }
        }
        Caption {
            text: qsTr("Play something, then watch the signals below while it runs. Simulate checks that muting and smooth restore work on your output device.")
            Layout.fillWidth: true
        }
        RowLayout {
            spacing: 10
            Button {
                objectName: "simulate"
                text: qsTr("Simulate 6 s ad (really ducks audio)")
                enabled: !page.engine.simulating && !page.engine.adActive
                onClicked: page.engine.simulate(6)
            }
            Spinner { objectName: "spinner"; visible: page.engine.simulating }
        }
    }
    Card {
        title: qsTr("Live signal contributions")
        Label {
            objectName: "waiting"
            visible: signalRows.count === 0
            text: qsTr("Waiting for audio…")
            color: Theme.secondary
        }
        Repeater {
            model: signalRows
            RowLayout {
                required property string name
                required property real level
                required property string value
                spacing: 10
                Label { text: name; Layout.preferredWidth: 90 * Theme.scale; wrapMode: Text.NoWrap; elide: Text.ElideRight }
                Gauge { value: level; label: name; Layout.fillWidth: true }
                Label { text: value; Layout.preferredWidth: 40 * Theme.scale; horizontalAlignment: Text.AlignRight; wrapMode: Text.NoWrap }
            }
        }
        RowLayout {
            spacing: 16
            Caption { objectName: "combined"; text: qsTr("Combined %1%").arg(Math.trunc(page.engine.confidence * 100)) }
            Caption { text: qsTr("Threshold %1%").arg(Math.trunc(page.engine.threshold * 100)) }
        }
        LatestWords {
            objectName: "testTranscript"
            readonly property bool nothing: page.engine.transcript === ""
            words: nothing ? qsTr("Transcription runs only on suspicious speech segments.") : page.engine.transcript
            color: nothing ? Theme.secondary : Theme.text
            Layout.fillWidth: true
        }
        Caption {
            objectName: "noSpeech"
            visible: !page.engine.speechAccess
            text: qsTr("Speech recognition is not enabled, so keyword scoring is off and detection relies on audio cues.")
            color: Theme.orangeText
            Layout.fillWidth: true
        }
    }
    RowLayout {
        spacing: 10
        Button {
            objectName: "forget"
            text: qsTr("Forget learned ad fingerprints")
            onClicked: {
                page.engine.forgetLearnedAds();
                forgotten.restart();
            }
        }
        Caption {
            objectName: "forgotten"
            visible: forgotten.running
            text: qsTr("Forgotten.")
            Accessible.role: Accessible.AlertMessage
        }
        Timer { id: forgotten; interval: 5000 }
    }
    Item { Layout.fillHeight: true }
}
