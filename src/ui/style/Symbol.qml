// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

Image {
    required property string name
    property color color: Theme.text
    property int size: 18

    width: size
    height: size
    sourceSize: Qt.size(size, size)  // in logical pixels
    source: name === "" ? "" : "image://symbol/" + name + "/" + hex(color)
    fillMode: Image.PreserveAspectFit
    Accessible.ignored: true

    function hex(c: color): string {
        return [c.a, c.r, c.g, c.b].map(x => ("0" + Math.round(x * 255).toString(16)).slice(-2)).join("");
    }
}
