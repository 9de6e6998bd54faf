import QtQuick
import QtQuick.Controls.Basic

// The list of the newest calls: one stop of the Tab key, arrows go through it.
ListView {
    property bool callable: true

    signal redial(number: string)

    function go(index: int) {
        currentIndex = Math.max(0, Math.min(count - 1, index));
        positionViewAtIndex(currentIndex, ListView.Contain);
    }

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: count > 0
    highlightFollowsCurrentItem: false
    Accessible.role: Accessible.List
    ScrollBar.vertical: ScrollBar {}

    Keys.onUpPressed: go(currentIndex - 1)
    Keys.onDownPressed: go(currentIndex + 1)
    Keys.onPressed: event => {
        if (event.key === Qt.Key_Home)
            go(0);
        else if (event.key === Qt.Key_End)
            go(count - 1);
        else
            return;
        event.accepted = true;
    }
}
