import QtQuick
import QtQuick.Layouts
import Velto

SettingsPane {
    id: pane

    required property AppModel app

    SectionCard {
        title: "Agent"
        footnote: "Sent to Gemini at the start of each call."
        Layout.fillWidth: true

        BodyText {
            text: "Default goal"
            Accessible.ignored: true
        }
        TextInputArea {
            id: goal
            label: "Default goal"
            text: pane.app.settings.defaultGoal
            onEdited: pane.app.settings.defaultGoal = editor.text
            Layout.fillWidth: true
        }
    }
    SectionCard {
        title: "Behavior"
        Layout.fillWidth: true

        Toggle {
            text: "Record calls"
            checked: pane.app.settings.recordCalls
            onToggled: pane.app.settings.recordCalls = checked
            Layout.fillWidth: true
        }
        Toggle {
            id: login
            text: "Launch at login"
            checked: pane.app.settings.launchAtLogin
            onToggled: {
                pane.app.settings.changeLaunchAtLogin(checked);
                // As it is, until it is otherwise.
                checked = Qt.binding(() => pane.app.settings.launchAtLogin);
            }
            Layout.fillWidth: true
        }
        FootnoteText {
            visible: text.length > 0
            text: pane.app.settings.loginItemError
            color: Theme.bad
        }
        Toggle {
            text: "Show Debug settings"
            checked: pane.app.settings.showDebug
            onToggled: pane.app.settings.showDebug = checked
            Layout.fillWidth: true
        }
    }
}
