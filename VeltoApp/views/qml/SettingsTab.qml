import QtQuick
import QtQuick.Controls.Basic
import Velto

// A tab: its symbol above its name.
TabButton {
    id: tab

    required property string tag
    required property string symbol
    required property string current
    readonly property bool selected: tag === current
    readonly property color ink: selected ? Theme.accent : Theme.muted

    implicitWidth: Math.max(Math.round(88 * Theme.textScale), implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: Theme.space2
    checkable: false
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    font.pixelSize: Theme.textSmall
    font.weight: Font.Medium

    Accessible.name: text
    Accessible.selectable: true
    Accessible.selected: selected
    Accessible.ignored: !visible
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: Column {
        spacing: Theme.space1

        Icon {
            anchors.horizontalCenter: parent.horizontalCenter
            name: tab.symbol
            color: tab.ink
            size: Math.round(20 * Theme.textScale)
            width: size
            height: size
        }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: tab.text
            textFormat: Text.PlainText
            font: tab.font
            color: tab.ink
            Accessible.ignored: true
        }
    }
    background: Rectangle {
        radius: Theme.radiusSmall
        color: tab.selected ? Theme.accentSoft : tab.down ? Theme.press : tab.hovered ? Theme.hover : "transparent"

        FocusRing {
            visible: tab.visualFocus
            around: Theme.radiusSmall
        }
    }
}
