import QtQuick
import QtQuick.Layouts
import Velto

Item {
    id: row

    required property string name
    required property string size

    signal playRequested
    signal revealRequested

    width: ListView.view ? ListView.view.width : 0
    implicitHeight: Theme.controlHeight + 2 * Theme.space2

    Accessible.role: Accessible.ListItem
    Accessible.name: name

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: Theme.space4
        anchors.rightMargin: Theme.space3
        spacing: Theme.space3

        Icon {
            name: "waveform"
            color: Theme.muted
            size: Math.round(18 * Theme.textScale)
        }
        BodyText {
            text: row.name
            elide: Text.ElideMiddle
            Layout.fillWidth: true
        }
        BodyText {
            text: row.size
            color: Theme.muted
            font.pixelSize: Theme.textSmall
        }
        SecondaryButton {
            text: "Play"
            symbol: "play.fill"
            Accessible.description: row.name
            onClicked: row.playRequested()
        }
        SecondaryButton {
            text: "Reveal"
            symbol: "folder"
            Accessible.description: row.name
            onClicked: row.revealRequested()
        }
    }
}
