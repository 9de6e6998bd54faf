import QtQuick
import QtQuick.Controls.Basic

// What a picker opens.
ListView {
    required property ComboBox picker

    clip: true
    implicitHeight: contentHeight
    currentIndex: picker.highlightedIndex
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.vertical: ScrollBar {}
}
