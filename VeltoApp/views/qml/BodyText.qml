import QtQuick
import Velto

// Text as it stands, never taken for markup. No Label: that takes every role for a static text's.
Text {
    color: Theme.text
    font.pixelSize: Theme.textBody
    textFormat: Text.PlainText
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: !visible || text.length === 0
}
