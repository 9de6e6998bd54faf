import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Velto

// The main window: a call is placed, followed and found again. Closing it ends the program, after a question
// while a call runs.
ApplicationWindow {
    id: window

    required property AppModel app
    property SettingsView settingsWindow: null
    property bool leaving: false
    readonly property bool roomy: height >= 600 * Theme.textScale
    readonly property int gap: roomy ? Theme.space4 : Theme.space3

    // As much larger as the letters are, where the screen has room.
    function fitting(length: int, available: int): int {
        return Math.max(length, Math.min(Math.round(length * Theme.textScale), available));
    }
    function openSettings() {
        if (!settingsWindow)
            settingsWindow = settingsComponent.createObject(window, {
                app: window.app
            });
        settingsWindow.show();
        settingsWindow.raise();
        settingsWindow.requestActivate();
    }
    function openReadiness() {
        app.settingsTab = "readiness";
        openSettings();
    }
    function leave() {
        leaving = true;
        if (app.session.running)
            app.session.stop();
        Qt.quit();
    }

    title: "Velto"
    visible: true
    width: fitting(920, Screen.desktopAvailableWidth)
    height: fitting(640, Screen.desktopAvailableHeight)
    minimumWidth: fitting(720, Screen.desktopAvailableWidth)
    minimumHeight: fitting(520, Screen.desktopAvailableHeight)
    color: Theme.window

    Component.onCompleted: app.mainWindowShown()
    onActiveChanged: if (active) app.mainWindowActivated()
    onClosing: close => {
        if (leaving)
            return;
        close.accepted = false;
        if (app.session.running)
            leaveDialog.open();
        else
            leave();
    }

    Connections {
        target: window.app
        function onSetupWanted() {
            window.openSettings();
        }
    }
    Connections {
        target: window.app.session
        function onStateChanged() {
            announcer.say("Session: " + window.app.session.state);
        }
        function onTroubleChanged() {
            announcer.say(window.app.session.trouble);
        }
    }
    Component {
        id: settingsComponent

        SettingsView {}
    }
    Shortcut {
        sequences: ["Ctrl+,"]
        onActivated: window.openSettings()
    }
    Shortcut {
        sequences: ["Ctrl+Q", "Ctrl+W"]
        onActivated: window.close()
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: window.roomy ? Theme.space5 : Theme.space4
        spacing: window.gap

        MainHeader {
            ready: window.app.readiness.ready
            onReadinessWanted: window.openReadiness()
            onSettingsWanted: window.openSettings()
            Layout.fillWidth: true
        }
        RowLayout {
            spacing: window.gap
            Layout.fillWidth: true
            Layout.fillHeight: true

            ColumnLayout {
                spacing: window.gap
                Layout.fillHeight: true
                Layout.fillWidth: true
                Layout.preferredWidth: 5

                NewCallSection {
                    id: newCall

                    app: window.app
                    goalLines: window.roomy ? 5 : 3
                    Layout.fillWidth: true
                }
                RecentCallsSection {
                    app: window.app
                    onRedialed: newCall.takeKeyboard()
                    Layout.fillWidth: true
                    Layout.fillHeight: true
                }
            }
            StatusSection {
                app: window.app
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 6
            }
        }
    }
    Announcer {
        id: announcer
    }
    LeaveDialog {
        id: leaveDialog

        onAccepted: window.leave()
    }
}
