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
                title: "Native",
                view: "NativeSessionView.qml"
            },
            {
                title: "Recordings",
                view: "RecordingsView.qml"
            },
            {
                title: "History",
                view: "HistoryView.qml"
            },
            {
                title: "Diagnostics",
                view: "DiagnosticsView.qml"
            },
            {
                title: "Routing",
                view: "RoutingView.qml"
            },
            {
                title: "Drivers",
                view: "DriversView.qml"
            }
        ]
        valueRole: "view"
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: Theme.space4
    }
    PaneLoader {
        app: area.app
        view: chooser.currentValue
        Layout.fillWidth: true
        Layout.fillHeight: true
    }
}
