import QtQuick
import QtQuick.Layouts
import Velto

// Checks that a person runs by hand.
SettingsPane {
    id: pane

    required property AppModel app

    fills: true

    Flow {
        spacing: Theme.space2
        Layout.fillWidth: true

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
        BusyMark {
            running: pane.app.diagnostics.busy || pane.app.drivers.busy
            height: Theme.controlHeight
        }
    }
    LogArea {
        label: "Diagnostics"
        text: pane.app.diagnostics.report
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.minimumHeight: Math.round(160 * Theme.textScale)
    }
}
