import QtQuick
import QtQuick.Layouts
import Velto

// The debug area: one of its panes at a time.
ColumnLayout {
    id: area

    required property AppModel app

    spacing: 0

    Picker {
        id: chooser
        label: "Pane"
        textRole: "title"
        model: [
            {
                pane: "native",
                title: "Native",
                view: "NativeSessionView.qml"
            },
            {
                pane: "recordings",
                title: "Recordings",
                view: "RecordingsView.qml"
            },
            {
                pane: "history",
                title: "History",
                view: "HistoryView.qml"
            },
            {
                pane: "diagnostics",
                title: "Diagnostics",
                view: "DiagnosticsView.qml"
            },
            {
                pane: "routing",
                title: "Routing",
                view: "RoutingView.qml"
            },
            {
                pane: "drivers",
                title: "Drivers",
                view: "DriversView.qml"
            }
        ]
        valueRole: "pane"
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: Theme.space4
    }
    PaneLoader {
        app: area.app
        view: chooser.model[chooser.currentIndex].view
        Layout.fillWidth: true
        Layout.fillHeight: true
    }
}
