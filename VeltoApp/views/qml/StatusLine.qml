import QtQuick
import Velto

// One check: a mark and a sentence.
Item {
    id: line

    property bool good: false
    property bool pending: false
    property alias text: label.text

    implicitHeight: label.implicitHeight

    Icon {
        id: mark

        y: Math.max(0, (label.implicitHeight / Math.max(1, label.lineCount) - height) / 2)
        name: line.pending ? "circle" : line.good ? "checkmark.circle.fill" : "exclamationmark.circle.fill"
        color: line.pending ? Theme.muted : line.good ? Theme.good : Theme.warning
        width: size
        height: size
    }
    BodyText {
        id: label

        anchors.left: mark.right
        anchors.right: parent.right
        anchors.leftMargin: Theme.space2
        wrapMode: Text.WordWrap
    }
}
