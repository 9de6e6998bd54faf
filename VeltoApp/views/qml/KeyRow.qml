import QtQuick
import QtQuick.Layouts
import Velto

// One provider's key: whether it is there and good, a field for another one, and the way to be rid of it.
ColumnLayout {
    id: row

    required property KeyModel key

    spacing: Theme.space2
    Layout.fillWidth: true

    function save() {
        const typed = field.text;
        field.clear();
        key.save(typed);
    }

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
        TextInputField {
            id: field
            label: row.key.name
            echoMode: TextInput.Password
            inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
            onAccepted: row.save()
            Layout.fillWidth: true
        }
        SecondaryButton {
            text: "Save"
            enabled: !row.key.busy
            Accessible.description: row.key.name
            onClicked: row.save()
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
