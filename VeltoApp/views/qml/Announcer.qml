import QtQuick

// Tells screen readers what has happened elsewhere than where the keyboard is: each message comes as a
// notification that appears. Nothing to see.
Item {
    id: announcer

    property string message

    function say(text: string) {
        visible = false;
        message = text;
        visible = text.length > 0;
    }

    visible: false
    width: 1
    height: 1
    Accessible.role: Accessible.Notification
    Accessible.name: message
}
