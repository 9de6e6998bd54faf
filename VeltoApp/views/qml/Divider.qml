import QtQuick
import Velto

Rectangle {
    implicitHeight: 1
    color: Theme.outline
}
