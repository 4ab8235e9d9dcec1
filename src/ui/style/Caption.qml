// SPDX-License-Identifier: MIT
import QtQuick
import Sordin.Style

Label {
    font: Theme.caption
    color: Theme.secondary
}
