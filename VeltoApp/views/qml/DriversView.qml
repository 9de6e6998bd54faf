import QtQuick
import QtQuick.Layouts
import Velto

// The audio drivers: what is installed, from where, and what came of it.
ColumnLayout {
    id: pane

    required property AppModel app

    spacing: Theme.space3

    Component.onCompleted: app.drivers.refresh()

    LogArea {
        label: "Drivers"
        text: pane.app.drivers.log
        follows: true
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.margins: Theme.space5
        Layout.bottomMargin: 0
    }
    ColumnLayout {
        spacing: Theme.space2
        Layout.margins: Theme.space5
        Layout.topMargin: 0

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
        }
    }
}
