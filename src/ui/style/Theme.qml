// SPDX-License-Identifier: MIT
pragma Singleton
import QtQuick
import Sordin.Style

// Colors, fonts and measures. In both appearances, text has a contrast of at least 4.5 to its background,
// symbols and marks of at least 3.
QtObject {
    readonly property bool dark: Appearance.dark
    readonly property bool still: Appearance.reducedMotion

    readonly property color accent: readable(Appearance.accent) ? Appearance.accent : dark ? "#6aa5ff" : "#2f6fed"
    readonly property color accentText: dark ? "#0c1526" : "#ffffff"
    readonly property color window: dark ? "#1c1d21" : "#f6f7f9"
    readonly property color sidebar: dark ? "#17181b" : "#eceef2"
    readonly property color card: dark ? "#26282d" : "#ffffff"
    readonly property color button: dark ? "#34373d" : "#ffffff"
    readonly property color outline: dark ? "#4b4f57" : "#cfd3da"
    readonly property color text: dark ? "#f1f2f4" : "#1b1d22"
    readonly property color secondary: dark ? "#a9adb6" : "#5f646e"
    readonly property color quaternary: dark ? "#3a3d44" : "#e3e5ea"
    readonly property color edge: dark ? "#7c818b" : "#8a909b"  // outlines of controls
    readonly property color hover: dark ? "#14ffffff" : "#0d000000"
    readonly property color pressed: dark ? "#22ffffff" : "#1a000000"
    readonly property color red: dark ? "#ff7b74" : "#d62f26"
    readonly property color orange: dark ? "#ffb040" : "#d47600"
    readonly property color orangeText: dark ? "#ffb040" : "#a35300"
    readonly property color yellow: dark ? "#ffd84d" : "#a07f00"
    readonly property color green: dark ? "#3fd16b" : "#23853f"
    readonly property color gray: dark ? "#9a9ea7" : "#747983"

    readonly property real points: Qt.application.font.pointSize > 0 ? Qt.application.font.pointSize : 10
    // Scales lengths that have to hold text: 1 for fonts of 10 points or less.
    readonly property real scale: Math.max(1, points / 10)
    readonly property font caption: sized(0.92, Font.Normal)
    readonly property font callout: sized(0.97, Font.Normal)
    readonly property font body: sized(1, Font.Normal)
    readonly property font headline: sized(1.05, Font.DemiBold)
    readonly property font title: sized(1.7, Font.Bold)
    readonly property font largeTitle: sized(2.2, Font.Bold)

    readonly property int quick: still ? 0 : 140 // milliseconds
    readonly property int gentle: still ? 0 : 300

    function sized(share: real, weight: int): font {
        return Qt.font({ family: Qt.application.font.family, pointSize: points * share, weight: weight });
    }

    function luminance(c: color): real {
        const linear = x => x <= 0.04045 ? x / 12.92 : Math.pow((x + 0.055) / 1.055, 2.4);
        return 0.2126 * linear(c.r) + 0.7152 * linear(c.g) + 0.0722 * linear(c.b);
    }

    // The contrast ratio of WCAG 2.1, 1 to 21.
    function contrast(a: color, b: color): real {
        const [low, high] = [luminance(a), luminance(b)].sort((x, y) => x - y);
        return (high + 0.05) / (low + 0.05);
    }

    // Whether a user's accent color has enough contrast for text and marks.
    function readable(c: color): bool {
        return c.valid && contrast(c, accentText) >= 4.5 && contrast(c, card) >= 3;
    }
}
