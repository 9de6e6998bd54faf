import QtQuick
import QtQuick.Controls.Basic
import Velto

// The settings window: what is missing before a call can be placed, what the user likes, and the debug area.
ApplicationWindow {
    id: window

    required property AppModel app

    readonly property string stored: app.settingsTab
    // What is stored may name a tab that is not there.
    readonly property string tab: stored === "general" || (stored === "debug" && app.settings.showDebug)
        ? stored : "readiness"

    title: "Velto Settings"
    width: 720
    height: 600
    minimumWidth: 720
    minimumHeight: 600
    maximumWidth: 720
    maximumHeight: 600
    color: Theme.window

    Shortcut {
        sequences: ["Ctrl+W"]
        onActivated: window.close()
    }

    header: SettingsTabBar {
        current: window.tab
        showDebug: window.app.settings.showDebug
        // No shortcut: what is open above the window is closed by the same key.
        Keys.onEscapePressed: window.close()
        onChosen: tab => window.app.settingsTab = tab
    }

    PaneLoader {
        anchors.fill: parent
        focus: true
        Keys.onEscapePressed: window.close()
        app: window.app
        view: !window.visible ? "" : window.tab === "general" ? "GeneralSettingsView.qml"
            : window.tab === "debug" ? "DebugSettingsView.qml" : "ReadinessView.qml"
    }
}
