import QtQuick
import QtQuick.Controls.Basic
import Velto

// One row of what a picker opens.
ItemDelegate {
    id: choice

    required property int index
    readonly property PickerList list: ListView.view as PickerList
    readonly property ComboBox picker: list ? list.picker : null

    width: list ? list.width : 0
    height: Theme.controlHeight
    leftPadding: Theme.space3
    rightPadding: Theme.space3
    text: picker ? picker.textAt(index) : ""
    font.pixelSize: Theme.textBody
    font.weight: picker && picker.currentIndex === index ? Font.DemiBold : Font.Normal
    highlighted: ListView.isCurrentItem

    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()

    contentItem: Text {
        text: choice.text
        textFormat: Text.PlainText
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        font: choice.font
        color: Theme.text
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: Theme.radiusSmall
        color: choice.highlighted ? Theme.accentSoft : "transparent"
    }
}
