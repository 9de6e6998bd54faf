import QtQuick
import QtQuick.Controls.Basic
import Velto

// Turns while something is going on, and is not there otherwise. An ornament.
BusyIndicator {
    visible: running
    padding: 0
    implicitWidth: Math.round(18 * Theme.textScale)
    implicitHeight: implicitWidth
    palette.dark: Theme.accent
    Accessible.ignored: true
}
