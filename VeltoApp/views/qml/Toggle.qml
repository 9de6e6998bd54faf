import QtQuick
import QtQuick.Controls.Basic
import Velto

// On or off, with its text beside it.
Switch {
    id: control

    implicitHeight: Math.max(Theme.controlHeight, implicitContentHeight)
    padding: 0
    spacing: Theme.space3
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    font.pixelSize: Theme.textBody
    opacity: enabled ? 1 : 0.6

    function press() {
        if (!enabled)
            return;
        toggle();
        toggled();
    }

    Accessible.name: text
    Accessible.ignored: !visible
    Accessible.onPressAction: press()
    Accessible.onToggleAction: press()
    Keys.onReturnPressed: press()
    Keys.onEnterPressed: press()

    contentItem: Text {
        leftPadding: control.indicator.width + control.spacing
        text: control.text
        textFormat: Text.PlainText
        wrapMode: Text.WordWrap
        verticalAlignment: Text.AlignVCenter
        font: control.font
        color: Theme.text
        Accessible.ignored: true
    }
    indicator: Rectangle {
        y: (control.height - height) / 2
        implicitWidth: 38
        implicitHeight: 22
        radius: height / 2
        color: control.checked ? Theme.accent : Theme.surface
        border.width: control.checked ? 0 : 1
        border.color: Theme.edge

        Rectangle {
            x: 3 + control.visualPosition * (parent.width - width - 6)
            y: 3
            width: 16
            height: 16
            radius: 8
            color: control.checked ? Theme.accentInk : Theme.edge
        }
        FocusRing {
            visible: control.visualFocus
            around: parent.height / 2
        }
    }
}
