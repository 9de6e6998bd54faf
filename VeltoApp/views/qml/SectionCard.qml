import QtQuick
import QtQuick.Layouts
import Velto

// A titled group on a surface of its own; what it holds is laid out below each other.
Rectangle {
    id: card

    property string title
    property string footnote
    default property alias content: body.data

    readonly property real above: Theme.space4 + (heading.visible ? heading.implicitHeight + Theme.space3 : 0)
    readonly property real below: Theme.space4 + (note.visible ? note.implicitHeight + Theme.space3 : 0)

    implicitWidth: body.implicitWidth + 2 * Theme.space4
    implicitHeight: above + body.implicitHeight + below
    radius: Theme.radius
    color: Theme.surface
    border.width: 1
    border.color: Theme.outline

    Accessible.role: Accessible.Grouping
    Accessible.name: title
    Accessible.ignored: !visible

    BodyText {
        id: heading

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: Theme.space4
        visible: text.length > 0
        text: card.title
        elide: Text.ElideRight
        font.pixelSize: Theme.textTitle
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }
    ColumnLayout {
        id: body

        anchors.fill: parent
        anchors.margins: Theme.space4
        anchors.topMargin: card.above
        anchors.bottomMargin: card.below
        spacing: Theme.space3
    }
    FootnoteText {
        id: note

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: Theme.space4
        visible: text.length > 0
        text: card.footnote
    }
}
