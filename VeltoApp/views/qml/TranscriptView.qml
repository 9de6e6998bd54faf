import QtQuick
import QtQuick.Controls.Basic
import Velto

// The lines of a conversation, the newest in sight.
ListView {
    id: list

    required property TranscriptModel transcript
    property string emptyText

    model: transcript
    clip: true
    spacing: Theme.space2
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.vertical: ScrollBar {}

    onCountChanged: positionViewAtEnd()
    Component.onCompleted: positionViewAtEnd()

    delegate: BodyText {
        required property string speaker
        required property string words

        width: ListView.view ? ListView.view.width : 0
        text: speaker.length > 0 ? speaker + ": " + words : words
        wrapMode: Text.Wrap
    }
}
