import QtQuick
import Velto

ActionButton {
    ground: Theme.surface
    rim: Theme.outline
}
