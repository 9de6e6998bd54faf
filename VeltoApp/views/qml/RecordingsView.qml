pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Velto

// The recordings on disk, and one made by hand.
SettingsPane {
    id: pane

    required property AppModel app

    fills: true

    Component.onCompleted: app.recordings.refresh()

    ColumnLayout {
        spacing: Theme.space3
        Layout.fillWidth: true

        Flow {
            spacing: Theme.space2
            Layout.fillWidth: true

            PrimaryButton {
                visible: !pane.app.recordings.recording
                text: "Record downlink (5 min)"
                onClicked: pane.app.recordings.record()
            }
            SecondaryButton {
                visible: pane.app.recordings.recording
                text: "Stop recording"
                symbol: "stop.fill"
                onClicked: pane.app.recordings.stop()
            }
            SecondaryButton {
                text: "Refresh"
                symbol: "arrow.clockwise"
                onClicked: pane.app.recordings.refresh()
            }
        }
        FormRow {
            label: "Play device"

            TextInputField {
                id: playDevice
                label: "Play device"
                Layout.fillWidth: true
            }
        }
        BodyText {
            visible: text.length > 0
            text: pane.app.recordings.status
            color: Theme.muted
            elide: Text.ElideMiddle
            Layout.fillWidth: true
        }
    }
    RowList {
        label: "Recordings"
        emptySymbol: "waveform"
        emptyText: "(none)"
        model: pane.app.recordings
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.minimumHeight: Math.round(160 * Theme.textScale)

        delegate: RecordingRow {
            recordings: pane.app.recordings
            device: playDevice.text
            onRevealRequested: pane.app.recordings.reveal(name)
        }
    }
    FootnoteText {
        text: "Recordings are 16-bit mono WAV in Application Support. Fixed 5-minute windows."
    }
}
