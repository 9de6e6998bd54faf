import QtQuick
import QtQuick.Layouts
import Velto

BodyText {
    color: Theme.muted
    font.pixelSize: Theme.textSmall
    wrapMode: Text.WordWrap
    Layout.fillWidth: true
}
