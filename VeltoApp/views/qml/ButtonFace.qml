import QtQuick
import Velto

// The symbol and the text of a button, in its middle.
Item {
    id: face

    required property string symbol
    required property string text
    required property color ink
    required property int symbolSize
    required property int spacing
    property alias font: label.font

    readonly property bool both: symbol.length > 0 && text.length > 0
    readonly property real symbolWidth: icon.visible ? icon.width + (both ? spacing : 0) : 0

    implicitWidth: symbolWidth + label.implicitWidth
    implicitHeight: Math.max(icon.visible ? icon.height : 0, label.implicitHeight)

    Row {
        anchors.centerIn: parent
        spacing: face.spacing

        Icon {
            id: icon
            anchors.verticalCenter: parent.verticalCenter
            visible: face.symbol.length > 0
            name: face.symbol
            color: face.ink
            size: face.symbolSize
            width: size
            height: size
        }
        Text {
            id: label
            anchors.verticalCenter: parent.verticalCenter
            visible: text.length > 0
            width: Math.min(implicitWidth, face.width - face.symbolWidth)
            text: face.text
            textFormat: Text.PlainText
            elide: Text.ElideRight
            color: face.ink
            Accessible.ignored: true
        }
    }
}
