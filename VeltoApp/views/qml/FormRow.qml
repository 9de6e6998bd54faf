import QtQuick
import QtQuick.Layouts
import Velto

// What a control is called, and the control.
RowLayout {
    id: row

    required property string label
    default property alias control: place.data

    spacing: Theme.space4
    Layout.fillWidth: true

    BodyText {
        text: row.label
        elide: Text.ElideRight
        // The control says it already.
        Accessible.ignored: true
        Layout.preferredWidth: Math.round(120 * Theme.textScale)
    }
    RowLayout {
        id: place
        Layout.fillWidth: true
    }
}
