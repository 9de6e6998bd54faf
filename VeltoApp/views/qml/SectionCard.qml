import QtQuick
import QtQuick.Layouts
import Velto

// A titled group on a surface of its own; what it holds is laid out below each other.
Rectangle {
    id: card

    property string title
    property string footnote
    default property alias content: body.data

    implicitWidth: layout.implicitWidth + 2 * Theme.space4
    implicitHeight: layout.implicitHeight + 2 * Theme.space4
    radius: Theme.radius
    color: Theme.surface
    border.width: 1
    border.color: Theme.outline

    Accessible.role: Accessible.Grouping
    Accessible.name: title
    Accessible.ignored: !visible

    ColumnLayout {
        id: layout
        anchors.fill: parent
        anchors.margins: Theme.space4
        spacing: Theme.space3

        BodyText {
            visible: text.length > 0
            text: card.title
            font.pixelSize: Theme.textTitle
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
        ColumnLayout {
            id: body
            spacing: Theme.space3
            Layout.fillWidth: true
            Layout.fillHeight: true
        }
        FootnoteText {
            visible: text.length > 0
            text: card.footnote
        }
    }
}
