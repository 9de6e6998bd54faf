import QtQuick
import QtQuick.Layouts
import Velto

// One thing that a call needs: whether it is there, and what brings it.
RowLayout {
    id: row

    required property string title
    required property string detail
    required property bool passed
    required property string action
    // In place of the action, while that is under way.
    property string progress
    // Why the action has not helped.
    property string trouble

    signal requested

    spacing: Theme.space3
    Layout.fillWidth: true

    Icon {
        name: row.passed ? "checkmark.circle.fill" : "exclamationmark.circle.fill"
        color: row.passed ? Theme.good : Theme.warning
        size: Math.round(22 * Theme.textScale)
        Layout.alignment: Qt.AlignTop
    }
    ColumnLayout {
        spacing: 2
        Layout.fillWidth: true

        BodyText {
            text: row.title
            font.weight: Font.Medium
            Accessible.description: row.passed ? "Ready" : "Not ready yet"
        }
        FootnoteText {
            text: row.detail
        }
        FootnoteText {
            visible: text.length > 0
            text: row.passed ? "" : row.trouble
            color: Theme.bad
        }
    }
    BusyLine {
        visible: text.length > 0
        text: row.progress
        Layout.fillWidth: false
    }
    SecondaryButton {
        visible: !row.passed && row.progress.length === 0
        text: row.action
        Accessible.description: row.title
        onClicked: row.requested()
    }
}
