import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Velto

// What was said in one call: a sheet over the history.
Popup {
    id: sheet

    required property RecordingsModel recordings
    property string name
    property string started
    property string durationText
    property string recordingPath
    // Its name, where it is in the folder of recordings.
    property string recording

    signal revealRequested(string path)

    function show(call: HistoryRow) {
        name = call.name;
        started = call.started;
        durationText = call.durationText;
        recordingPath = call.recordingPath;
        recording = recordings.nameOf(recordingPath);
        lines.text = call.transcript;
        open();
    }

    anchors.centerIn: parent
    width: Math.min(parent ? parent.width - 2 * Theme.space6 : 0, Math.round(600 * Theme.textScale))
    height: parent ? parent.height - 2 * Theme.space6 : 0
    modal: true
    focus: true
    padding: Theme.space5

    TranscriptModel {
        id: lines
    }

    background: Rectangle {
        radius: Theme.radius
        color: Theme.surface
        border.width: 1
        border.color: Theme.outline
    }
    contentItem: ColumnLayout {
        spacing: Theme.space3
        Accessible.role: Accessible.Dialog
        Accessible.name: sheet.name

        BodyText {
            text: sheet.name
            font.pixelSize: Theme.textLarge
            font.weight: Font.DemiBold
            elide: Text.ElideRight
            Accessible.role: Accessible.Heading
            Layout.fillWidth: true
        }
        RowLayout {
            spacing: Theme.space2

            Icon {
                name: "calendar"
                color: Theme.muted
            }
            BodyText {
                text: sheet.started
                color: Theme.muted
                Layout.rightMargin: Theme.space3
            }
            Icon {
                name: "clock"
                color: Theme.muted
            }
            BodyText {
                text: sheet.durationText
                color: Theme.muted
            }
        }
        Divider {
            Layout.fillWidth: true
        }
        WaveformSlider {
            visible: sheet.recording.length > 0
            recordings: sheet.recordings
            file: sheet.recording
            implicitHeight: Math.round(44 * Theme.textScale)
            Layout.fillWidth: true
        }
        Notice {
            symbol: "exclamationmark.circle.fill"
            ink: Theme.bad
            ground: Theme.badSoft
            text: sheet.recording.length > 0 && sheet.recordings.unplayable === sheet.recording ? sheet.recordings.status : ""
            Layout.fillWidth: true
        }
        TranscriptView {
            transcript: lines
            emptyText: "(no transcript)"
            Layout.fillWidth: true
            Layout.fillHeight: true
        }
        Divider {
            Layout.fillWidth: true
        }
        RowLayout {
            SecondaryButton {
                visible: sheet.recordingPath.length > 0
                text: "Reveal recording"
                symbol: "waveform"
                onClicked: sheet.revealRequested(sheet.recordingPath)
            }
            Item {
                Layout.fillWidth: true
            }
            PrimaryButton {
                text: "Done"
                focus: true
                onClicked: sheet.close()
            }
        }
    }
}
