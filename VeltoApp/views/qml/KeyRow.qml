import QtQuick
import QtQuick.Layouts
import Velto

// One provider's key: whether it is there and good, a field for another one, and the way to be rid of it.
ColumnLayout {
    id: row

    required property KeyModel key

    spacing: Theme.space2
    Layout.fillWidth: true

    // A field for passwords has no name that leaves the program, so what it stands in has one.
    Accessible.role: Accessible.Grouping
    Accessible.name: key.name

    RowLayout {
        spacing: Theme.space3

        Icon {
            name: !row.key.present ? "circle" : row.key.valid ? "checkmark.circle.fill" : "exclamationmark.circle.fill"
            color: !row.key.present ? Theme.muted : row.key.valid ? Theme.good : Theme.warning
            size: Math.round(22 * Theme.textScale)
        }
        ColumnLayout {
            spacing: 0
            Layout.preferredWidth: Math.round(96 * Theme.textScale)

            BodyText {
                text: row.key.name
                font.weight: Font.Medium
            }
            BodyText {
                visible: text.length > 0
                text: row.key.verdict
                color: row.key.valid ? Theme.good : Theme.warning
                font.pixelSize: Theme.textSmall
            }
        }
        SecretField {
            id: field
            label: row.key.name
            onAccepted: row.key.save(take())
            Layout.fillWidth: true
        }
        SecondaryButton {
            text: "Save"
            enabled: !row.key.busy
            Accessible.description: row.key.name
            onClicked: row.key.save(field.take())
        }
        SecondaryButton {
            visible: row.key.present
            text: "Remove"
            ink: Theme.bad
            enabled: !row.key.busy
            Accessible.description: row.key.name
            onClicked: row.key.remove()
        }
    }
    FootnoteText {
        visible: text.length > 0
        text: row.key.problem
        color: Theme.bad
    }
}
