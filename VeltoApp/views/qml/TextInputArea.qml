import QtQuick
import QtQuick.Controls.Basic
import Velto

// Text of several lines, which scrolls within what it is given. Tab goes on to the next control.
ScrollView {
    id: view

    required property string label
    property alias text: area.text
    property alias placeholderText: area.placeholderText
    property alias editor: area

    signal edited

    implicitHeight: Theme.controlHeight * 2.5
    background: FieldFrame {
        focused: area.activeFocus
    }
    ScrollBar.horizontal.policy: ScrollBar.AlwaysOff

    TextArea {
        id: area
        leftPadding: Theme.space3
        rightPadding: Theme.space3
        topPadding: Theme.space2
        bottomPadding: Theme.space2
        wrapMode: TextEdit.Wrap
        textFormat: TextEdit.PlainText
        selectByMouse: true
        font.pixelSize: Theme.textBody
        color: enabled ? Theme.text : Theme.muted
        placeholderTextColor: Theme.muted
        selectionColor: Theme.accent
        selectedTextColor: Theme.accentInk
        background: null

        Accessible.name: view.label
        Accessible.ignored: !visible
        Keys.onTabPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
        Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)

        onTextChanged: if (activeFocus) view.edited()
    }
}
