import QtQuick
import Velto

// What stands where something will be: centred in its parent.
Column {
    id: empty

    required property string symbol
    required property string text

    anchors.centerIn: parent
    width: parent.width - 2 * Theme.space5
    spacing: Theme.space2

    Icon {
        anchors.horizontalCenter: parent.horizontalCenter
        name: empty.symbol
        color: Theme.edge
        size: Math.round(28 * Theme.textScale)
        width: size
        height: size
    }
    BodyText {
        width: parent.width
        text: empty.text
        color: Theme.muted
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
    }
}
