import QtQuick
import QtQuick.Layouts
import Velto

// The newest calls, each to be called again.
SectionCard {
    id: section

    required property AppModel app

    signal redialed

    title: "Recent calls"

    RecentCalls {
        id: list

        model: section.app.recents
        delegate: RecentCallRow {}
        callable: !section.app.session.running
        Layout.fillWidth: true
        Layout.fillHeight: true
        Accessible.name: section.title
        onRedial: number => {
            section.app.session.redial(number, section.app.agent.goal);
            section.redialed();
        }

        EmptyState {
            visible: list.count === 0
            symbol: "clock"
            text: "No calls yet"
        }
        // Only while somebody can see how long ago is wrong.
        Timer {
            interval: section.app.recents.agoLifetime
            running: interval > 0 && list.Window.visibility !== Window.Hidden && list.Window.visibility !== Window.Minimized
            repeat: true
            onTriggered: section.app.recents.refreshAgo()
        }
    }
}
