import QtQuick
import QtQuick.Layouts
import Velto

FocusScope {
    id: row

    required property int index
    required property string name
    required property string number
    required property string ago
    required property string durationText
    readonly property RecentCalls list: ListView.view as RecentCalls

    width: list ? list.width : 0
    implicitHeight: layout.implicitHeight + 2 * Theme.space2
    Accessible.role: Accessible.ListItem
    Accessible.name: name + ", " + ago + ", " + durationText

    Divider {
        anchors.top: parent.top
        width: parent.width
        visible: row.index > 0
    }
    RowLayout {
        id: layout

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.rightMargin: Theme.space3
        spacing: Theme.space3

        ColumnLayout {
            spacing: 2
            Layout.fillWidth: true

            BodyText {
                text: row.name
                elide: Text.ElideMiddle
                font.weight: Font.Medium
                Accessible.ignored: true
                Layout.fillWidth: true
            }
            BodyText {
                text: row.ago + " · " + row.durationText
                color: Theme.muted
                elide: Text.ElideRight
                font.pixelSize: Theme.textSmall
                Accessible.ignored: true
                Layout.fillWidth: true
            }
        }
        SecondaryButton {
            text: "Redial"
            symbol: "phone.arrow.up.right"
            enabled: row.list && row.list.callable && row.number.length > 0
            focus: true
            activeFocusOnTab: false
            ringed: activeFocus // which also comes by the list's arrow keys
            Accessible.name: "Redial " + row.name
            onClicked: row.list.redial(row.number)
        }
    }
}
