import QtQuick
import QtQuick.Layouts
import Velto

// Checks that a person runs by hand.
ColumnLayout {
    id: pane

    required property AppModel app

    spacing: Theme.space3

    Flow {
        spacing: Theme.space2
        Layout.fillWidth: true
        Layout.margins: Theme.space5
        Layout.bottomMargin: 0

        PrimaryButton {
            text: "Run checks"
            enabled: !pane.app.diagnostics.busy
            onClicked: pane.app.diagnostics.runChecks()
        }
        SecondaryButton {
            text: "Loopback probe"
            enabled: !pane.app.diagnostics.busy
            onClicked: pane.app.diagnostics.loopbackProbe()
        }
        SecondaryButton {
            text: "Restart CoreAudio"
            enabled: !pane.app.drivers.busy
            onClicked: pane.app.drivers.restartCoreAudio()
        }
        SecondaryButton {
            text: "Restore my devices"
            onClicked: pane.app.diagnostics.restoreDevices()
        }
        SecondaryButton {
            text: "Reveal app log"
            symbol: "folder"
            onClicked: pane.app.diagnostics.revealLog()
        }
    }
    LogArea {
        label: "Diagnostics"
        text: pane.app.diagnostics.report
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.margins: Theme.space5
        Layout.topMargin: 0
    }
}
