// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Model
import Sordin.Style

ColumnLayout {
    id: page
    required property SordinEngine engine
    spacing: 16

    Card {
        RowLayout {
            spacing: 12
            Label { text: qsTr("During ads"); wrapMode: Text.NoWrap; Accessible.ignored: true }
            Slider {
                objectName: "duck"
                from: 0
                to: 50
                stepSize: 5
                snapMode: Slider.SnapAlways
                Layout.fillWidth: true
                value: page.engine.duckPercent
                onValueChanged: if (value !== page.engine.duckPercent) page.engine.duckPercent = value
                Accessible.name: qsTr("During ads")
                Accessible.description: duckText.text
            }
            Label {
                id: duckText
                objectName: "duckText"
                text: page.engine.duckPercent === 0 ? qsTr("Mute") : qsTr("Duck to %1%").arg(Math.trunc(page.engine.duckPercent))
                Layout.preferredWidth: 100 * Theme.scale
                horizontalAlignment: Text.AlignRight
                wrapMode: Text.NoWrap
            }
        }
        Caption {
            text: qsTr("Volume fades out in 0.15 s and back in over 0.6 s. Your original volume is always restored.")
            Layout.fillWidth: true
        }
    }
    Card {
        Switch {
            objectName: "transcription"
            text: qsTr("Transcribe suspicious segments on-device")
            Layout.fillWidth: true
            checked: page.engine.transcriptionEnabled
            onCheckedChanged: {
                if (checked !== page.engine.transcriptionEnabled) {
                    page.engine.transcriptionEnabled = checked;
                }
                checked = Qt.binding(() => page.engine.transcriptionEnabled);
            }
        }
        Caption {
            text: qsTr("Uses Apple's on-device speech model only. No audio or text ever leaves your Mac; Sordin has no networking code.")
            Layout.fillWidth: true
        }
    }
    Card {
        Switch {
            objectName: "tunedDetection"
            text: qsTr("Tuned detection")
            Layout.fillWidth: true
            checked: page.engine.tunedDetection
            onCheckedChanged: {
                if (checked !== page.engine.tunedDetection) {
                    page.engine.tunedDetection = checked;
                }
                checked = Qt.binding(() => page.engine.tunedDetection);
            }
        }
        Caption {
            text: qsTr("Tuned on labeled broadcasts: the volume returns sooner after an ad, and less of the programme is muted.")
            Layout.fillWidth: true
        }
    }
    Card {
        Switch {
            objectName: "pauseInCalls"
            text: qsTr("Do nothing during calls")
            Layout.fillWidth: true
            checked: page.engine.pauseInCalls
            onCheckedChanged: {
                if (checked !== page.engine.pauseInCalls) {
                    page.engine.pauseInCalls = checked;
                }
                checked = Qt.binding(() => page.engine.pauseInCalls);
            }
        }
        Caption {
            text: qsTr("A call is on while an application plays sound and records from a microphone, or marks its sound as a call.")
            Layout.fillWidth: true
        }
    }
    Card {
        PermissionRow {
            objectName: "screen"
            title: qsTr("Screen & System Audio Recording")
            granted: page.engine.screenAccess
            onWanted: {
                page.engine.requestScreenAccess();
                settings.opened(page.engine.openSettings("Privacy_ScreenCapture"));
            }
        }
        SettingsHint { id: settings; anchor: "Privacy_ScreenCapture"; granted: page.engine.screenAccess }
        PermissionRow {
            objectName: "speech"
            title: qsTr("Speech Recognition (optional)")
            granted: page.engine.speechAccess
            onWanted: software.opened(page.engine.requestSpeechAccess())
        }
        SettingsHint { id: software; anchor: "Privacy_SpeechRecognition"; granted: page.engine.speechAccess }
        Button { objectName: "refresh"; text: qsTr("Refresh"); onClicked: page.engine.refreshAccess() }
    }
    Button {
        objectName: "onboarding"
        text: qsTr("Show onboarding again")
        onClicked: page.engine.onboardingComplete = false
    }
    Item { Layout.fillHeight: true }
}
