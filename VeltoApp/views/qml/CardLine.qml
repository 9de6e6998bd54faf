import QtQuick
import QtQuick.Layouts
import Velto

// Between two rows of a card.
Rectangle {
    implicitHeight: 1
    color: Theme.outline
    Layout.fillWidth: true
}
