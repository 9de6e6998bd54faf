import QtQuick
import Velto

// The ground of whatever is typed into or picked from.
Rectangle {
    property bool focused: false

    implicitHeight: Theme.controlHeight
    radius: Theme.radiusSmall
    color: Theme.surface
    border.width: focused ? Theme.focusWidth : 1
    border.color: focused ? Theme.focus : Theme.edge
}
