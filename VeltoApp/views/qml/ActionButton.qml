import QtQuick
import QtQuick.Controls.Basic
import Velto

// What every button has in common: a symbol and a text on a ground, pointer, keyboard and screen reader.
Button {
    id: button

    property string symbol
    property color ink: Theme.text
    property color ground: Theme.surface
    property color rim: "transparent"
    property bool ringed: visualFocus

    readonly property color shownInk: enabled ? ink : Theme.muted
    readonly property int symbolSize: Math.round(16 * Theme.textScale)

    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    leftPadding: Theme.space4
    rightPadding: Theme.space4
    topPadding: Theme.space2
    bottomPadding: Theme.space2
    spacing: Theme.space2
    implicitHeight: Math.max(Theme.controlHeight, implicitContentHeight + topPadding + bottomPadding)
    font.pixelSize: Theme.textBody
    font.weight: Font.Medium
    opacity: enabled ? 1 : 0.6

    Accessible.name: text
    // The state itself does not reach screen readers.
    Accessible.description: enabled ? "" : "Unavailable"
    Accessible.ignored: !visible
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: if (enabled) clicked()
    Keys.onEnterPressed: if (enabled) clicked()

    contentItem: ButtonFace {
        symbol: button.symbol
        text: button.display === AbstractButton.IconOnly ? "" : button.text
        ink: button.shownInk
        symbolSize: button.symbolSize
        spacing: button.spacing
        font: button.font
    }
    background: Rectangle {
        radius: Theme.radiusSmall
        color: button.ground
        border.width: 1
        border.color: button.rim

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: button.down ? Theme.press : button.hovered ? Theme.hover : "transparent"
        }
        FocusRing {
            visible: button.ringed
            around: Theme.radiusSmall
        }
    }
}
