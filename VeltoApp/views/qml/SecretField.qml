import QtQuick
import Velto

// A field whose text nobody is shown or told.
TextInputField {
    id: field

    // Qt hands this property to screen readers and to whoever else listens, even of a field for passwords.
    readonly property string text: displayText

    // What was typed, which is gone from the field then.
    function take(): string {
        const typed = getText(0, length);
        clear();
        return typed;
    }

    echoMode: TextInput.Password
    inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
}
