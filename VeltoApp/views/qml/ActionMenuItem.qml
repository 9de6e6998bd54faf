import QtQuick
import QtQuick.Controls.Basic
import Velto

MenuItem {
    id: item

    implicitHeight: Theme.controlHeight
    leftPadding: Theme.space3
    rightPadding: Theme.space3
    font.pixelSize: Theme.textBody

    Accessible.name: text
    Accessible.onPressAction: if (enabled) triggered()

    contentItem: Text {
        text: item.text
        textFormat: Text.PlainText
        verticalAlignment: Text.AlignVCenter
        font: item.font
        color: item.enabled ? Theme.text : Theme.muted
        opacity: item.enabled ? 1 : 0.6
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: Theme.radiusSmall
        color: item.highlighted ? Theme.accentSoft : "transparent"
    }
}
