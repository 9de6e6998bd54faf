import QtQuick
import QtQuick.Layouts
import Velto

// The system's default devices, and those that a call makes the defaults.
SettingsPane {
    id: pane

    required property AppModel app

    Component.onCompleted: app.audio.refresh()

    SectionCard {
        title: "Status"
        Layout.fillWidth: true

        BodyText {
            text: pane.app.audio.status
            wrapMode: Text.WordWrap
            Layout.fillWidth: true
        }
        BodyText {
            text: "Mic: " + pane.app.audio.currentInput
            color: Theme.muted
            elide: Text.ElideRight
            Layout.fillWidth: true
        }
        BodyText {
            text: "Out: " + pane.app.audio.currentOutput
            color: Theme.muted
            elide: Text.ElideRight
            Layout.fillWidth: true
        }
    }

    SectionCard {
        title: "Devices"
        footnote: "Bridge: mic " + pane.app.audio.wantInput + ", out " + pane.app.audio.wantOutput + ". Agent: mic " + pane.app.audio.agentMic + " → feed " + pane.app.audio.agentFeed + "."
        Layout.fillWidth: true

        FormRow {
            label: "Input"

            NamePicker {
                label: "Input"
                names: pane.app.audio.inputDevices
                current: pane.app.audio.currentInput
                onChosen: name => pane.app.audio.chooseInput(name)
                Layout.fillWidth: true
            }
        }
        FormRow {
            label: "Output"

            NamePicker {
                label: "Output"
                names: pane.app.audio.outputDevices
                current: pane.app.audio.currentOutput
                onChosen: name => pane.app.audio.chooseOutput(name)
                Layout.fillWidth: true
            }
        }
    }

    Flow {
        spacing: Theme.space2
        Layout.fillWidth: true

        SecondaryButton {
            text: "Refresh"
            symbol: "arrow.clockwise"
            onClicked: pane.app.audio.refresh()
        }
        SecondaryButton {
            text: "Set bridge defaults"
            onClicked: pane.app.audio.setBridgeDefaults()
        }
    }
}
