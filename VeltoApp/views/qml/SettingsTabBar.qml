import QtQuick
import QtQuick.Layouts
import Velto

// The tabs of the settings window, in its head.
Rectangle {
    id: bar

    required property string current
    required property bool showDebug

    signal chosen(string tab)

    implicitHeight: row.implicitHeight + 2 * Theme.space2
    color: Theme.surface

    Accessible.role: Accessible.PageTabList
    Accessible.name: "Settings"

    RowLayout {
        id: row
        anchors.centerIn: parent
        spacing: Theme.space1

        SettingsTab {
            id: readiness
            tag: "readiness"
            text: "Readiness"
            symbol: "checklist"
            current: bar.current
            onClicked: bar.chosen(tag)
            KeyNavigation.right: general
        }
        SettingsTab {
            id: general
            tag: "general"
            text: "General"
            symbol: "gearshape"
            current: bar.current
            onClicked: bar.chosen(tag)
            KeyNavigation.right: debug
        }
        SettingsTab {
            id: debug
            visible: bar.showDebug
            tag: "debug"
            text: "Debug"
            symbol: "wrench.and.screwdriver"
            current: bar.current
            onClicked: bar.chosen(tag)
        }
    }
    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.outline
    }
}
