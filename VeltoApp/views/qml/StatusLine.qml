import QtQuick
import QtQuick.Layouts
import Velto

// One check: a mark and a sentence.
RowLayout {
    id: line

    property bool good: false
    property bool pending: false
    property alias text: label.text

    spacing: Theme.space2

    Icon {
        name: line.pending ? "circle" : line.good ? "checkmark.circle.fill" : "exclamationmark.circle.fill"
        color: line.pending ? Theme.muted : line.good ? Theme.good : Theme.warning
        Layout.alignment: Qt.AlignTop
        Layout.topMargin: Math.max(0, (label.lineHeightOf - height) / 2)
    }
    BodyText {
        id: label

        readonly property real lineHeightOf: contentHeight / Math.max(1, lineCount)

        wrapMode: Text.WordWrap
        Layout.fillWidth: true
    }
}
