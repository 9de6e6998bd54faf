import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Velto

// What is going on, while it is.
RowLayout {
    id: line

    required property string text

    spacing: Theme.space2

    BusyIndicator {
        running: line.visible
        padding: 0
        implicitWidth: Math.round(18 * Theme.textScale)
        implicitHeight: implicitWidth
        palette.dark: Theme.accent
        Accessible.ignored: true
    }
    BodyText {
        text: line.text
        color: Theme.muted
        font.pixelSize: Theme.textSmall
        elide: Text.ElideRight
        Layout.fillWidth: true
    }
}
