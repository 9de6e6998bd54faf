import QtQuick
import QtQuick.Layouts
import Velto

// What is going on, while it is.
RowLayout {
    id: line

    required property string text

    spacing: Theme.space2

    BusyMark {
        running: line.visible
    }
    BodyText {
        text: line.text
        color: Theme.muted
        font.pixelSize: Theme.textSmall
        elide: Text.ElideRight
        Layout.fillWidth: true
    }
}
