import QtQuick
import Velto

// One line of a conversation: the caller's on the left, the agent's on the right.
Item {
    id: bubble

    required property string speaker
    required property string words
    required property bool fromAgent

    readonly property real widest: Math.max(0, width * 0.84 - 2 * Theme.space3)

    width: ListView.view ? ListView.view.width - Theme.space3 : 0
    implicitHeight: ground.height
    Accessible.role: Accessible.StaticText
    Accessible.name: speaker.length > 0 ? speaker + ": " + words : words

    Rectangle {
        id: ground

        anchors.right: bubble.fromAgent ? parent.right : undefined
        width: Math.min(bubble.widest, Math.max(who.implicitWidth, said.implicitWidth)) + 2 * Theme.space3
        height: said.y + said.height + Theme.space2
        radius: Theme.radius
        color: bubble.fromAgent ? Theme.accentSoft : Theme.sunken

        Text {
            id: who

            x: Theme.space3
            y: Theme.space2
            visible: text.length > 0
            text: bubble.speaker
            textFormat: Text.PlainText
            color: bubble.fromAgent ? Theme.accent : Theme.muted
            font.pixelSize: Theme.textSmall
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        Text {
            id: said

            x: Theme.space3
            y: who.visible ? who.y + who.height + 2 : Theme.space2
            width: bubble.widest
            text: bubble.words
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            color: Theme.text
            font.pixelSize: Theme.textBody
            Accessible.ignored: true
        }
    }
}
