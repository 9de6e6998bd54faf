import QtQuick
import QtQuick.Controls.Basic
import Velto

// The list of the newest calls: one stop of the Tab key, arrows go through it.
ListView {
    property bool callable: true

    signal redial(number: string)

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: count > 0
    highlightMoveDuration: 0
    Accessible.role: Accessible.List
    ScrollBar.vertical: ScrollBar {}
}
