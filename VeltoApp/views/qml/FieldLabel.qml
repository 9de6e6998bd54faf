import QtQuick
import Velto

// Written above a field, which carries the same name itself.
BodyText {
    color: Theme.muted
    font.pixelSize: Theme.textSmall
    font.weight: Font.Medium
    Accessible.ignored: true
}
