import QtQuick
import Velto

// A symbol by its name; an ornament, so whatever it tells must stand beside it in words.
SymbolItem {
    property int size: Math.round(16 * Theme.textScale)

    implicitWidth: size
    implicitHeight: size
    color: Theme.text
    Accessible.ignored: true
}
