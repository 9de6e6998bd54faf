import QtQuick
import Velto

// One of several names, such as of devices, which may come and go: what is shown is what is so, whether or not
// it is on offer, and what is on offer stays as it is while it is read.
Picker {
    id: picker

    required property var names
    required property string current

    property var offered: names

    signal chosen(string name)

    model: offered
    currentIndex: offered.indexOf(current)
    displayText: current

    onNamesChanged: if (!popup.visible) offered = names
    onActivated: index => {
        const name = offered[index];
        currentIndex = Qt.binding(() => offered.indexOf(current));
        if (name !== current)
            chosen(name);
    }

    Connections {
        target: picker.popup
        function onClosed() {
            picker.offered = picker.names;
        }
    }
}
