import QtQuick
import QtQuick.Controls.Basic
import Velto

// One line of text. `label` is what it is called; it is written above it by whoever places it.
TextField {
    id: field

    required property string label

    implicitHeight: Math.max(Theme.controlHeight, contentHeight + topPadding + bottomPadding)
    leftPadding: Theme.space3
    rightPadding: Theme.space3
    topPadding: Theme.space2
    bottomPadding: Theme.space2
    selectByMouse: true
    font.pixelSize: Theme.textBody
    color: enabled ? Theme.text : Theme.muted
    placeholderTextColor: Theme.muted
    selectionColor: Theme.accent
    selectedTextColor: Theme.accentInk
    opacity: enabled ? 1 : 0.6

    Accessible.name: label
    Accessible.readOnly: readOnly
    Accessible.description: placeholderText
    Accessible.ignored: !visible

    background: FieldFrame {
        focused: field.activeFocus
        fixed: field.readOnly
    }
}
