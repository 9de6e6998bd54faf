import QtQuick
import QtQuick.Layouts
import Velto

// A call with everything that the session tells of it.
SettingsPane {
    id: pane

    required property AppModel app

    Component.onCompleted: app.audio.refresh()

    SectionCard {
        title: "Native session (in-process)"
        Layout.fillWidth: true

        FormRow {
            label: "Number"

            TextInputField {
                label: "Number"
                placeholderText: "e.g. +15551234567"
                inputMethodHints: Qt.ImhDialableCharactersOnly
                text: pane.app.session.number
                onTextEdited: pane.app.session.number = text
                Layout.fillWidth: true
            }
        }
        FormRow {
            label: "Goal"

            TextInputArea {
                label: "Goal"
                text: pane.app.agent.goal
                onEdited: pane.app.agent.goal = editor.text
                Layout.fillWidth: true
            }
        }
        Flow {
            spacing: Theme.space2
            Layout.fillWidth: true

            PrimaryButton {
                text: "Call & watch"
                symbol: "phone.arrow.up.right"
                enabled: !pane.app.session.running
                onClicked: pane.app.session.start(pane.app.agent.goal, true)
            }
            SecondaryButton {
                text: "Watch"
                enabled: !pane.app.session.running
                onClicked: pane.app.session.start(pane.app.agent.goal, false)
            }
            SecondaryButton {
                text: "Stop"
                symbol: "stop.fill"
                enabled: pane.app.session.running
                onClicked: pane.app.session.stop()
            }
        }
        SessionStateLine {
            session: pane.app.session
            Layout.fillWidth: true
        }
        BodyText {
            visible: text.length > 0
            text: pane.app.session.audioStats
            color: Theme.muted
            font.family: "monospace"
            font.pixelSize: Theme.textSmall
            wrapMode: Text.WordWrap
            Layout.fillWidth: true
        }
    }

    SectionCard {
        footnote: "Lets you hear what the caller hears. Use headphones to avoid feedback into the call."
        Layout.fillWidth: true

        Toggle {
            text: "Monitor agent voice (debug)"
            checked: pane.app.settings.monitorAgent
            onToggled: pane.app.settings.monitorAgent = checked
            Layout.fillWidth: true
        }
        BodyText {
            text: "Play agent voice on a real output"
            color: Theme.muted
        }
        FormRow {
            label: "Output"

            NamePicker {
                label: "Output"
                names: pane.app.audio.monitorDevices
                current: pane.app.settings.monitorDevice
                onChosen: name => pane.app.settings.monitorDevice = name
                Layout.fillWidth: true
            }
        }
    }

    SectionCard {
        title: "Log"
        Layout.fillWidth: true

        LogArea {
            label: "Log"
            text: pane.app.sessionLog.text
            follows: true
            Layout.fillWidth: true
            Layout.preferredHeight: Math.round(220 * Theme.textScale)
        }
    }
}
