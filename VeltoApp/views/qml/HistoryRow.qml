pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Velto

// One call of the history. What else can be done with it is in its menu: the right button, or the menu key.
ItemDelegate {
    id: row

    required property string callId
    required property string name
    required property string started
    required property string durationText
    required property string transcript
    required property bool hasRecording
    required property string recordingPath

    signal openRequested
    signal revealRequested
    signal removeRequested

    width: ListView.view ? ListView.view.width : 0
    implicitHeight: Math.max(Math.round(52 * Theme.textScale), implicitContentHeight + 2 * Theme.space2)
    leftPadding: Theme.space4
    rightPadding: Theme.space3
    topPadding: 0
    bottomPadding: 0
    focusPolicy: Qt.StrongFocus

    Accessible.role: Accessible.ListItem
    Accessible.name: name
    Accessible.description: started + ", " + durationText
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Keys.onMenuPressed: menu.popup(row)
    Keys.onPressed: event => {
        if (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier))
            menu.popup(row);
    }

    onClicked: row.openRequested()

    onPressAndHold: menu.popup()

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: menu.popup()
    }

    Menu {
        id: menu

        ActionMenuItem {
            text: "Reveal recording"
            enabled: row.hasRecording
            onTriggered: row.revealRequested()
        }
        ActionMenuItem {
            text: "Delete"
            onTriggered: row.removeRequested()
        }
    }

    contentItem: RowLayout {
        spacing: Theme.space3

        ColumnLayout {
            spacing: 0
            Layout.fillWidth: true

            BodyText {
                text: row.name
                font.weight: Font.Medium
                elide: Text.ElideRight
                Accessible.ignored: true
                Layout.fillWidth: true
            }
            BodyText {
                text: row.started
                color: Theme.muted
                font.pixelSize: Theme.textSmall
                elide: Text.ElideRight
                Accessible.ignored: true
                Layout.fillWidth: true
            }
        }
        Icon {
            visible: row.hasRecording
            name: "waveform"
            color: Theme.muted
            size: Math.round(16 * Theme.textScale)
        }
        BodyText {
            text: row.durationText
            color: Theme.muted
            Accessible.ignored: true
        }
        Icon {
            name: "chevron.right"
            color: Theme.muted
            size: Math.round(14 * Theme.textScale)
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: row.down ? Theme.press : row.hovered ? Theme.hover : "transparent"

        FocusRing {
            anchors.margins: 1
            visible: row.visualFocus
            around: Theme.radius - 3
        }
    }
}
