import QtQuick
import QtQuick.Controls.Basic
import Velto

// Text as it stands, never taken for markup.
Label {
    color: Theme.text
    font.pixelSize: Theme.textBody
    textFormat: Text.PlainText
    Accessible.name: text
    Accessible.ignored: !visible || text.length === 0
}
