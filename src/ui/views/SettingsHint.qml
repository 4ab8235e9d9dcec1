// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Sordin.Style

// Instructions for the user if no program for a setting was found. For `anchor`, see
// Permissions::openSettings().
Caption {
    required property string anchor
    required property bool granted
    property bool missing: false
    function opened(found: bool) { missing = !found; }

    objectName: "settingsHint"
    visible: missing && !granted
    text: anchor === "Privacy_ScreenCapture"
          ? qsTr("No app on this desktop can change permissions. In a terminal: flatpak override --user --filesystem=xdg-run/pipewire-0 --socket=pulseaudio org.sordin.Sordin")
          : qsTr("No app on this desktop can install software. Install the package pocketsphinx-en-us, then reopen Sordin.")
    color: Theme.orangeText
    Layout.fillWidth: true
    Accessible.role: Accessible.AlertMessage
}
