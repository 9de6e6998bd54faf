import QtQuick
import Velto

// A sentence that wants to be read, on a ground of its own; not there while it is empty.
Rectangle {
    id: notice

    property alias text: label.text
    required property string symbol
    required property color ink
    required property color ground

    visible: text.length > 0
    implicitHeight: label.implicitHeight + 2 * Theme.space2
    radius: Theme.radiusSmall
    color: ground

    Icon {
        id: mark

        x: Theme.space3
        y: label.y + Math.max(0, (label.implicitHeight / Math.max(1, label.lineCount) - height) / 2)
        name: notice.symbol
        color: notice.ink
        width: size
        height: size
    }
    BodyText {
        id: label

        anchors.left: mark.right
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.leftMargin: Theme.space2
        anchors.rightMargin: Theme.space3
        wrapMode: Text.Wrap
        maximumLineCount: 4
        elide: Text.ElideRight
    }
}
