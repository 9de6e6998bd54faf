import QtQuick
import Velto

// Around its parent, where the keyboard is.
Rectangle {
    property int around: 8

    anchors.fill: parent
    anchors.margins: -Theme.focusWidth - 1
    radius: around + Theme.focusWidth + 1
    color: "transparent"
    border.width: Theme.focusWidth
    border.color: Theme.focus
}
