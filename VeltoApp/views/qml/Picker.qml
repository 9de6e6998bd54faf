import QtQuick
import QtQuick.Controls.Basic
import Velto

// One of several. `label` is what it is called; it is written beside it by whoever places it.
ComboBox {
    id: picker

    required property string label

    implicitHeight: Theme.controlHeight
    implicitWidth: 240
    leftPadding: Theme.space3
    rightPadding: Theme.space6
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    font.pixelSize: Theme.textBody
    opacity: enabled ? 1 : 0.6

    Accessible.name: label
    Accessible.description: displayText
    Accessible.ignored: !visible
    Accessible.onPressAction: {
        if (!enabled)
            return;
        forceActiveFocus();
        popup.visible ? popup.close() : popup.open();
    }

    // It would close itself when the key is let go, and whoever is around it when it is pressed.
    Keys.onEscapePressed: event => {
        event.accepted = popup.visible;
        popup.close();
    }

    contentItem: Text {
        text: picker.displayText
        textFormat: Text.PlainText
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        font: picker.font
        color: Theme.text
        Accessible.ignored: true
    }
    indicator: Icon {
        x: picker.width - width - Theme.space3
        y: (picker.height - height) / 2
        name: "chevron.down"
        color: Theme.muted
        size: Math.round(12 * Theme.textScale)
        width: size
        height: size
    }
    background: FieldFrame {
        focused: picker.visualFocus || picker.popup.visible

        Rectangle {
            anchors.fill: parent
            anchors.margins: Theme.focusWidth
            radius: parent.radius - Theme.focusWidth
            color: picker.down ? Theme.press : picker.hovered ? Theme.hover : "transparent"
        }
    }
    delegate: PickerChoice {}
    popup: Popup {
        y: picker.height + Theme.space1
        width: picker.width
        implicitHeight: Math.min(contentItem.implicitHeight + 2 * padding, Math.round(320 * Theme.textScale))
        padding: Theme.space1

        contentItem: PickerList {
            picker: picker
            model: picker.popup.visible ? picker.delegateModel : null
        }
        background: Rectangle {
            radius: Theme.radiusSmall
            color: Theme.surface
            border.width: 1
            border.color: Theme.outline
        }
    }
}
