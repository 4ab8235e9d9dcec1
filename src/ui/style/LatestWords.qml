// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

// Shows the end of a growing text: as many of the last words as fit on `lines`.
Label {
    id: label
    required property string words
    property int lines: 4

    Accessible.name: words
    onWordsChanged: fit()
    onWidthChanged: fit()
    onFontChanged: fit()
    Component.onCompleted: fit()

    function fit() {
        text = words;
        if (lineCount <= lines || width <= 0) {
            return;
        }
        const all = words.split(" ");
        let [tooMany, few] = [0, all.length - 1];
        while (few - tooMany > 1) {  // binary search for the number of words to omit
            const middle = Math.floor((tooMany + few) / 2);
            text = "… " + all.slice(middle).join(" ");
            if (lineCount > lines) {
                tooMany = middle;
            } else {
                few = middle;
            }
        }
        text = "… " + all.slice(few).join(" ");
    }
}
