import QtQuick
import QtQuick.Controls.Basic
import Velto

ApplicationWindow {
    required property AppModel app

    title: "Velto Settings"
    width: 720
    height: 600
    minimumWidth: width
    maximumWidth: width
    minimumHeight: height
    maximumHeight: height
    color: Theme.window
}
