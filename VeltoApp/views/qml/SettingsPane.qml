import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Velto

// What a tab shows: cards below each other, which scroll when they are more than the window holds.
ScrollView {
    id: pane

    default property alias content: column.data
    // Whether something in it takes the height that is left over.
    property bool fills: false

    contentWidth: availableWidth
    ScrollBar.horizontal.policy: ScrollBar.AlwaysOff

    // The keyboard may go to what has been scrolled away.
    function reveal(item: Item) {
        const flickable = contentItem as Flickable;
        if (!flickable || !item)
            return;
        const top = item.mapToItem(column, 0, 0).y + column.y - Theme.space4;
        const bottom = top + item.height + 2 * Theme.space4;
        if (top < flickable.contentY)
            flickable.contentY = Math.max(0, top);
        else if (bottom > flickable.contentY + flickable.height)
            flickable.contentY = Math.min(bottom, flickable.contentHeight) - flickable.height;
    }
    function isWithin(item: Item): bool {
        let parent = item;
        while (parent && parent !== column)
            parent = parent.parent;
        return parent === column;
    }

    Connections {
        target: pane.Window.window
        function onActiveFocusItemChanged() {
            const item = pane.Window.activeFocusItem;
            if (pane.isWithin(item))
                pane.reveal(item);
        }
    }

    Item {
        width: pane.availableWidth
        implicitHeight: column.height + 2 * Theme.space5
        height: implicitHeight

        ColumnLayout {
            id: column
            x: Theme.space5
            y: Theme.space5
            width: parent.width - 2 * Theme.space5
            height: pane.fills ? Math.max(implicitHeight, pane.availableHeight - 2 * Theme.space5) : implicitHeight
            spacing: Theme.space4
        }
    }
}
