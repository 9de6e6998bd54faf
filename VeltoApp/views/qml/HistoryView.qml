pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Velto

// Every finished call; one opens as a sheet over the list.
SettingsPane {
    id: pane

    required property AppModel app

    fills: true

    RowLayout {
        Layout.fillWidth: true

        BodyText {
            text: "Call history"
            font.pixelSize: Theme.textTitle
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
            Layout.fillWidth: true
        }
        SecondaryButton {
            text: "Clear"
            symbol: "trash"
            enabled: pane.app.history.count > 0
            onClicked: pane.app.history.clear()
        }
    }
    RowList {
        label: "Call history"
        emptySymbol: "clock"
        emptyText: "(no calls yet)"
        model: pane.app.history
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.minimumHeight: Math.round(160 * Theme.textScale)

        delegate: HistoryRow {
            id: row
            onOpenRequested: sheet.show(row)
            onRevealRequested: pane.app.recordings.reveal(recordingPath)
            onRemoveRequested: pane.app.history.remove(callId)
        }
    }

    CallTranscriptView {
        id: sheet
        recordings: pane.app.recordings
        parent: pane.Window.contentItem
        onRevealRequested: path => pane.app.recordings.reveal(path)
    }
}
