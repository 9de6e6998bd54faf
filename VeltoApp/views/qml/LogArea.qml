import QtQuick
import QtQuick.Controls.Basic
import Velto

// Lines that a program has written, to be read, selected and copied. Tab goes on to the next control.
ScrollView {
    id: view

    required property string label
    required property string text
    // Whether what is written last is what is to be seen.
    property bool follows: false

    background: FieldFrame {
        focused: area.activeFocus
        border.color: focused ? Theme.focus : Theme.outline
    }

    TextArea {
        id: area
        text: view.text
        textFormat: TextEdit.PlainText
        readOnly: true
        selectByMouse: true
        selectByKeyboard: true
        wrapMode: TextEdit.Wrap
        leftPadding: Theme.space3
        rightPadding: Theme.space3
        topPadding: Theme.space2
        bottomPadding: Theme.space2
        font.family: "monospace"
        font.pixelSize: Theme.textSmall
        color: Theme.text
        selectionColor: Theme.accent
        selectedTextColor: Theme.accentInk
        background: null

        Accessible.name: view.label
        Accessible.readOnly: true
        KeyNavigation.priority: KeyNavigation.BeforeItem
        KeyNavigation.tab: nextItemInFocusChain(true)
        KeyNavigation.backtab: nextItemInFocusChain(false)

        onTextChanged: if (view.follows) cursorPosition = length
    }
}
