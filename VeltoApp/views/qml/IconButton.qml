import QtQuick
import QtQuick.Controls.Basic
import Velto

// A button that is a symbol alone; `text` is what is read out and shown under the pointer.
ActionButton {
    id: button

    ink: Theme.muted
    ground: "transparent"
    display: AbstractButton.IconOnly
    leftPadding: Theme.space2
    rightPadding: Theme.space2
    implicitWidth: implicitHeight

    ToolTip {
        visible: (button.hovered || button.visualFocus) && button.text.length > 0
        delay: 500
        text: button.text
    }
}
