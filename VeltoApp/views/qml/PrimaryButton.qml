import QtQuick
import Velto

// What a view is for; one in a view.
ActionButton {
    ink: Theme.accentInk
    ground: enabled ? Theme.accent : Theme.sunken
    rim: enabled ? "transparent" : Theme.outline
}
