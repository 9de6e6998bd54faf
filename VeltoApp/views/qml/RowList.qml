import QtQuick
import QtQuick.Controls.Basic
import Velto

// Rows on a surface of their own, which scroll within what they are given.
ListView {
    id: list

    required property string label
    // Instead of rows, when there is none.
    required property string emptySymbol
    required property string emptyText

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: true
    ScrollBar.vertical: ScrollBar {}

    Accessible.role: Accessible.List
    Accessible.name: label

    EmptyState {
        parent: list
        visible: list.count === 0
        symbol: list.emptySymbol
        text: list.emptyText
    }
    Rectangle {
        parent: list
        z: -1
        anchors.fill: parent
        radius: Theme.radius
        color: Theme.surface
        border.width: 1
        border.color: Theme.outline
    }
}
