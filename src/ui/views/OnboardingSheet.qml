// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Sordin.Model
import Sordin.Style

// The first-run guide over the main window. Only finishing it closes it.
T.Popup {
    id: sheet
    required property SordinEngine engine
    required property int lastStep
    property bool iconIsShown: true  // in the desktop's panel
    property int step: 0

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(560 * Theme.scale, parent.width - 32)
    height: Math.min(Math.max(420 * Theme.scale, page.height + 14 + bar.height + 2 * padding), parent.height - 32)
    padding: 28
    modal: true
    focus: true
    closePolicy: T.Popup.NoAutoClose
    visible: !engine.onboardingComplete
    onAboutToShow: step = 0
    onOpened: primary.forceActiveFocus()

    T.Overlay.modal: Rectangle { color: Theme.dark ? "#a0000000" : "#55000000" }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.quick } }
    exit: Transition { NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.quick } }
    background: Rectangle { radius: 14; color: Theme.card; border { width: 1; color: Theme.quaternary } }

    function goBack() {
        --step;
        if (step === 0) {
            primary.forceActiveFocus();  // the back button is hidden now
        }
    }

    function finish() {
        engine.onboardingComplete = true;
        if (engine.isEnabled) {
            engine.startCapture();
        } else {
            engine.stopCapture();
        }
    }

    contentItem: ColumnLayout {
        spacing: 14
        Accessible.role: Accessible.Dialog
        Accessible.name: qsTr("Welcome to Sordin")
        Keys.onReturnPressed: primary.clicked()
        Keys.onEnterPressed: primary.clicked()
        Keys.onPressed: event => event.accepted = focusScroller.turn(event.key)

        Flickable {
            id: scroller
            objectName: "guideScroller"
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.rightMargin: -20  // room for the scroll bar
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            contentWidth: width
            contentHeight: page.height
            T.ScrollBar.vertical: ScrollBar { }
            Loader {
                id: page
                x: 2  // room for the focus frame
                width: scroller.width - 24
                sourceComponent: sheet.step === 0 ? welcome : sheet.step === 1 ? systemAudio : sheet.step === 2 ? speech : muting
                onSourceComponentChanged: scroller.contentY = 0
            }
            FocusScroller { id: focusScroller; area: scroller }
        }
        RowLayout {
            id: bar
            spacing: 10
            Row {
                spacing: 6
                Accessible.role: Accessible.StaticText
                Accessible.name: qsTr("Page %1 of %2").arg(sheet.step + 1).arg(sheet.lastStep + 1)
                Repeater {
                    model: sheet.lastStep + 1
                    Rectangle {
                        required property int index
                        width: 8
                        height: 8
                        radius: 4
                        color: index === sheet.step ? Theme.accent : Qt.alpha(Theme.secondary, 0.3)
                    }
                }
            }
            Item { Layout.fillWidth: true }
            Button { objectName: "back"; visible: sheet.step > 0; text: qsTr("Back"); onClicked: sheet.goBack() }
            Button {
                id: primary
                objectName: "primary"
                focus: true
                highlighted: true
                text: sheet.step === sheet.lastStep ? qsTr("Start listening") : qsTr("Continue")
                onClicked: {
                    if (sheet.step === sheet.lastStep) {
                        sheet.finish();
                    } else {
                        ++sheet.step;
                    }
                }
            }
        }
    }

    component Page: ColumnLayout {
        id: frame
        required property string symbol
        required property string title
        required property string body
        default property alias content: rest.data
        spacing: 14
        Symbol { name: frame.symbol; size: 32; color: Theme.accent }
        Label {
            objectName: "sheetTitle"
            text: frame.title
            font: Theme.largeTitle
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        Label { text: frame.body; lineHeight: 1.15; Layout.fillWidth: true }
        ColumnLayout { id: rest; spacing: 12; Layout.fillWidth: true }
    }

    Component {
        id: welcome
        Page {
            symbol: "speaker.slash.fill"
            title: qsTr("Welcome to Sordin")
            body: qsTr("Sordin listens to whatever your Mac is playing, spots advertisements, and fades the volume down until the ad is over. It works with any app: music, podcasts, video, radio, browsers.")
            Repeater {
                model: [
                    { symbol: "cpu", text: qsTr("All analysis runs on this Mac with Core ML and Apple's on-device speech model.") },
                    { symbol: "lock.shield", text: qsTr("Zero cloud processing. Audio and transcripts are never stored or sent anywhere.") },
                    { symbol: "bolt", text: qsTr("Light on resources: 16 kHz mono capture, models idle during silence.") },
                ]
                RowLayout {
                    required property var modelData
                    spacing: 12
                    Symbol { name: modelData.symbol; size: 20; color: Theme.accent }
                    Label { text: modelData.text; Layout.fillWidth: true }
                }
            }
        }
    }
    component StatusRow: Flow {
        id: statusRow
        required property bool granted
        required property string missing
        property bool optional: false
        spacing: 8
        Layout.fillWidth: true
        RowLayout {
            spacing: 8
            height: permission.implicitHeight + 12  // the height of a button
            Symbol {
                visible: statusRow.granted || !statusRow.optional
                name: statusRow.granted ? "checkmark.circle.fill" : "exclamationmark.circle"
                color: statusRow.granted ? Theme.green : Theme.orange
            }
            Label {
                id: permission
                objectName: "permission"
                text: statusRow.granted ? qsTr("Permission granted") : statusRow.missing
                color: statusRow.granted || !statusRow.optional ? Theme.text : Theme.secondary
                wrapMode: Text.NoWrap
            }
        }
    }

    Component {
        id: systemAudio
        Page {
            symbol: "record.circle"
            title: qsTr("System audio permission")
            body: qsTr("macOS protects system audio capture behind the Screen & System Audio Recording permission. Sordin asks for it only to hear the audio your Mac plays. It never captures the screen contents; video frames are discarded.")
            StatusRow {
                granted: sheet.engine.screenAccess
                missing: qsTr("Not granted yet")
                Button { objectName: "request"; visible: !sheet.engine.screenAccess; text: qsTr("Request"); onClicked: sheet.engine.requestScreenAccess() }
                Button {
                    objectName: "openSettings"
                    visible: !sheet.engine.screenAccess
                    text: qsTr("Open System Settings")
                    onClicked: settings.opened(sheet.engine.openSettings("Privacy_ScreenCapture"))
                }
            }
            SettingsHint { id: settings; anchor: "Privacy_ScreenCapture"; granted: sheet.engine.screenAccess }
            Caption {
                objectName: "reopen"
                visible: !sheet.engine.screenAccess
                text: qsTr("After enabling Sordin in Privacy & Security → Screen & System Audio Recording, you may need to quit and reopen the app.")
                Layout.fillWidth: true
            }
            Button { objectName: "recheck"; text: qsTr("Re-check"); onClicked: sheet.engine.refreshAccess() }
        }
    }
    Component {
        id: speech
        Page {
            symbol: "text.bubble"
            title: qsTr("Speech recognition (optional)")
            body: qsTr("When a segment looks suspicious, Sordin transcribes a few seconds with Apple's on-device speech recognizer and looks for phrases like “promo code” or “sponsored by”. Recognition is forced on-device, with no server fallback.")
            StatusRow {
                granted: sheet.engine.speechAccess
                missing: qsTr("Not granted")
                optional: true
                Button {
                    objectName: "allow"
                    visible: !sheet.engine.speechAccess
                    text: qsTr("Allow")
                    onClicked: software.opened(sheet.engine.requestSpeechAccess())
                }
            }
            SettingsHint { id: software; anchor: "Privacy_SpeechRecognition"; granted: sheet.engine.speechAccess }
            Caption {
                objectName: "noPrompt"
                visible: !sheet.engine.speechRequestPossible
                text: qsTr("This build isn't packaged with an Info.plist, so macOS can't show the speech prompt. Detection still works from audio cues; run make-app to build a bundled app with transcription.")
                color: Theme.orangeText
                Layout.fillWidth: true
            }
            Caption { objectName: "skip"; visible: !sheet.engine.speechAccess; text: qsTr("You can skip this step."); Layout.fillWidth: true }
        }
    }
    Component {
        id: muting
        Page {
            symbol: "checkmark.seal"
            title: qsTr("How muting works")
            body: qsTr("When ad confidence passes your sensitivity threshold, Sordin fades your output device's volume to zero (or a level you choose) and restores it smoothly when the ad ends. Your original volume is saved and always put back, even after a crash.")
            Label {
                objectName: "whereItIs"
                text: sheet.iconIsShown
                      ? qsTr("Use the menu bar icon to pause Sordin or change sensitivity. Test Mode lets you watch detection without any muting.")
                      : qsTr("This desktop shows no icon for Sordin. Its window has all controls; open Sordin again to bring it back. Test Mode lets you watch detection without any muting.")
                lineHeight: 1.15
                Layout.fillWidth: true
            }
            Label {
                objectName: "goesOn"
                text: sheet.iconIsShown
                      ? qsTr("Closing the window leaves Sordin running. Quit it from its icon, or with Ctrl+Q.")
                      : qsTr("Closing the window leaves Sordin running, minimized. Quit it with Ctrl+Q.")
                lineHeight: 1.15
                Layout.fillWidth: true
            }
            Caption {
                objectName: "lastWords"
                text: qsTr("Sordin can't be perfect. If it mutes too often or misses ads, adjust the sensitivity slider.")
                Layout.fillWidth: true
            }
        }
    }
}
