import QtQuick
import QtQuick.Controls.Basic
import Velto

// A conversation as bubbles on two sides. Shows the newest line when it comes, unless the reader has scrolled up.
ListView {
    id: view

    required property TranscriptModel transcript
    property string emptyText
    property bool following: true

    function toBottom() {
        following = true;
        positionViewAtEnd();
    }
    function keepUp() {
        if (following)
            positionViewAtEnd();
    }
    function noteReader() {
        following = atYEnd;
    }

    objectName: "transcript"
    model: transcript
    clip: true
    spacing: Theme.space2
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: true
    activeFocusOnTab: count > 0
    keyNavigationEnabled: false
    Accessible.role: Accessible.List
    Accessible.name: "Transcript"

    onContentHeightChanged: keepUp()
    onHeightChanged: keepUp()
    onMovementEnded: noteReader()
    onVisibleChanged: if (visible) toBottom()

    Keys.onUpPressed: scrollBy(-Theme.space6)
    Keys.onDownPressed: scrollBy(Theme.space6)
    Keys.onPressed: event => {
        const page = height - Theme.space6;
        switch (event.key) {
        case Qt.Key_PageUp:
            scrollBy(-page);
            break;
        case Qt.Key_PageDown:
            scrollBy(page);
            break;
        case Qt.Key_Home:
            following = false;
            positionViewAtBeginning();
            break;
        case Qt.Key_End:
            toBottom();
            break;
        default:
            return;
        }
        event.accepted = true;
    }
    function scrollBy(distance: real) {
        const end = Math.max(originY, originY + contentHeight - height);
        contentY = Math.max(originY, Math.min(end, contentY + distance));
        noteReader();
    }

    delegate: TranscriptBubble {}

    ScrollBar.vertical: ScrollBar {
        onPressedChanged: if (!pressed) view.noteReader()
    }
    FocusRing {
        visible: view.activeFocus
        anchors.margins: 0
    }
    EmptyState {
        visible: view.count === 0
        symbol: "waveform"
        text: view.emptyText
    }
    IconButton {
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: Theme.space2
        visible: !view.following && !view.atYEnd
        text: "Newest line"
        symbol: "arrow.down"
        ground: Theme.surface
        rim: Theme.outline
        onClicked: view.toBottom()
    }
}
