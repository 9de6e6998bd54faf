import QtQuick
import QtQuick.Layouts
import Velto

Item {
    id: row

    required property RecordingsModel recordings
    required property string device
    required property string name
    required property string size

    signal revealRequested

    width: ListView.view ? ListView.view.width : 0
    implicitHeight: texts.implicitHeight + 2 * Theme.space3

    Accessible.role: Accessible.ListItem
    Accessible.name: name

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: Theme.space4
        anchors.rightMargin: Theme.space3
        spacing: Theme.space3

        ColumnLayout {
            id: texts
            spacing: Theme.space2
            Layout.fillWidth: true

            RowLayout {
                spacing: Theme.space3

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
            }
            WaveformSlider {
                id: wave
                recordings: row.recordings
                device: row.device
                file: row.name
                Layout.fillWidth: true
            }
        }
        SecondaryButton {
            text: wave.playing ? "Stop" : "Play"
            symbol: wave.playing ? "stop.fill" : "play.fill"
            Accessible.description: row.name
            onClicked: wave.playing ? row.recordings.stopPlaying() : wave.playFrom(0)
        }
        SecondaryButton {
            text: "Reveal"
            symbol: "folder"
            Accessible.description: row.name
            onClicked: row.revealRequested()
        }
    }
}
