import QtQuick
import Velto

// The ground of whatever is typed into or picked from.
Rectangle {
    property bool focused: false
    property bool fixed: false // to be read only

    implicitHeight: Theme.controlHeight
    radius: Theme.radiusSmall
    color: fixed ? Theme.sunken : Theme.surface
    border.width: focused ? Theme.focusWidth : 1
    border.color: focused ? Theme.focus : fixed ? Theme.outline : Theme.edge
}
