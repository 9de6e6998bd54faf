import QtQuick
import QtQuick.Layouts
import Velto

// Whom to call, and what about.
SectionCard {
    id: section

    required property AppModel app
    required property int goalLines
    readonly property bool running: app.session.running
    readonly property bool callable: !running && number.text.trim().length > 0

    function call() {
        if (callable)
            app.session.start(app.agent.goal, true);
    }

    // The keyboard goes to where the next step is.
    function takeKeyboard() {
        const next = running ? stopButton : callButton;
        next.forceActiveFocus(Qt.TabFocusReason);
    }

    title: "New call"

    onRunningChanged: if (callButton.activeFocus || number.activeFocus || stopButton.activeFocus)
        takeKeyboard()

    ColumnLayout {
        spacing: Theme.space1
        Layout.fillWidth: true

        FieldLabel {
            text: "Number"
        }
        TextInputField {
            id: number

            focus: true
            label: "Number"
            placeholderText: "e.g. +15551234567"
            text: section.app.session.number
            readOnly: section.running
            inputMethodHints: Qt.ImhDialableCharactersOnly
            maximumLength: 200
            Layout.fillWidth: true
            onTextEdited: section.app.session.number = text
            onAccepted: section.call()
        }
    }
    ColumnLayout {
        spacing: Theme.space1
        Layout.fillWidth: true

        FieldLabel {
            text: "Goal"
        }
        TextInputArea {
            label: "Goal"
            text: section.app.agent.goal
            Layout.fillWidth: true
            Layout.preferredHeight: section.goalLines * Theme.textBody * 1.2 + 2 * Theme.space2
            onEdited: section.app.agent.goal = text
        }
    }
    RowLayout {
        spacing: Theme.space2
        Layout.fillWidth: true

        PrimaryButton {
            id: callButton

            text: "Call with AI"
            symbol: "phone.arrow.up.right"
            enabled: section.callable
            Layout.fillWidth: true
            onClicked: section.call()
        }
        ActionButton {
            id: stopButton

            text: "Stop"
            symbol: "stop.fill"
            ink: Theme.bad
            ground: Theme.badSoft
            visible: section.running
            onClicked: section.app.session.stop()
        }
    }
}
