import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Velto

ApplicationWindow {
    id: window

    required property AppModel app

    title: "Velto"
    minimumWidth: 720
    minimumHeight: 520
    color: Theme.window

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.space5
        spacing: Theme.space3

        Label {
            text: "Velto"
            color: Theme.text
            font.pixelSize: Theme.textLarge
        }
        Label {
            text: window.app.session.state
            color: Theme.muted
            font.pixelSize: Theme.textBody
        }
        Item {
            Layout.fillHeight: true
        }
    }
}
