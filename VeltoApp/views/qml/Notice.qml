import QtQuick
import QtQuick.Layouts
import Velto

// A sentence that wants to be read, on a ground of its own; not there while it is empty.
Rectangle {
    id: notice

    property alias text: label.text
    required property string symbol
    required property color ink
    required property color ground

    visible: text.length > 0
    implicitHeight: row.implicitHeight + 2 * Theme.space2
    radius: Theme.radiusSmall
    color: ground

    RowLayout {
        id: row

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.margins: Theme.space3
        spacing: Theme.space2

        Icon {
            name: notice.symbol
            color: notice.ink
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: 1
        }
        BodyText {
            id: label

            wrapMode: Text.Wrap
            maximumLineCount: 4
            elide: Text.ElideRight
            Layout.fillWidth: true
        }
    }
}
