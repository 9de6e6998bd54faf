import QtQuick
import QtQuick.Layouts
import Velto

// The audio drivers: what is installed, from where, and what came of it.
SettingsPane {
    id: pane

    required property AppModel app

    fills: true

    Component.onCompleted: app.drivers.refresh()

    LogArea {
        label: "Drivers"
        text: pane.app.drivers.log
        follows: true
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.minimumHeight: Math.round(120 * Theme.textScale)
    }
    ColumnLayout {
        spacing: Theme.space2
        Layout.fillWidth: true

        BodyText {
            text: "Installed HAL drivers: " + pane.app.drivers.installed
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        BodyText {
            text: "Source: " + pane.app.drivers.source
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        FootnoteText {
            text: "Install copies VeltoHQ/VeltoLoop/VeltoVoice into /Library/Audio/Plug-Ins/HAL and restarts coreaudiod (interrupts audio). Restart CoreAudio clears stale driver state without reinstalling."
        }
        Flow {
            spacing: Theme.space2
            Layout.fillWidth: true
            Layout.topMargin: Theme.space2

            PrimaryButton {
                text: "Install (admin)"
                enabled: !pane.app.drivers.busy
                onClicked: pane.app.drivers.install()
            }
            SecondaryButton {
                text: "Uninstall (admin)"
                enabled: !pane.app.drivers.busy
                onClicked: pane.app.drivers.uninstall()
            }
            SecondaryButton {
                text: "Restart CoreAudio"
                enabled: !pane.app.drivers.busy
                onClicked: pane.app.drivers.restartCoreAudio()
            }
            BusyMark {
                running: pane.app.drivers.busy
                height: Theme.controlHeight
            }
        }
    }
}
