import QtQuick
import QtQuick.Layouts
import Velto

// The session's state in a word and a colour, and how long it has run.
RowLayout {
    id: line

    required property SessionModel session
    readonly property color ink: {
        switch (session.state) {
        case "warming":
        case "dialing":
            return Theme.accent;
        case "live":
            return Theme.good;
        case "error":
            return Theme.bad;
        default:
            return Theme.muted;
        }
    }

    spacing: Theme.space2

    Rectangle {
        implicitWidth: 10
        implicitHeight: 10
        radius: 5
        color: line.ink
    }
    BodyText {
        text: "Session:"
        color: Theme.muted
        Accessible.ignored: true
    }
    BodyText {
        text: line.session.state
        color: line.ink
        font.weight: Font.DemiBold
        Accessible.name: "Session: " + text
        Layout.fillWidth: true
    }
    Icon {
        visible: time.visible
        name: "clock"
        color: Theme.muted
        size: Theme.textBody
    }
    BodyText {
        id: time

        visible: text.length > 0
        text: line.session.runningTime
        color: line.session.running ? Theme.text : Theme.muted
        Accessible.name: "Running time " + text
    }
}
