import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Velto

// Asked when the main window is to be closed while a call runs.
Popup {
    id: dialog

    signal accepted

    anchors.centerIn: parent
    width: Math.min(440, parent ? parent.width - 2 * Theme.space5 : 440)
    padding: Theme.space5
    modal: true
    focus: true
    onOpened: stay.forceActiveFocus(Qt.TabFocusReason)

    background: Rectangle {
        radius: Theme.radius
        color: Theme.surface
        border.width: 1
        border.color: Theme.outline
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: Theme.space3
        Accessible.role: Accessible.Dialog
        Accessible.name: heading.text
        Accessible.description: explanation.text

        BodyText {
            id: heading

            text: "A call is in progress"
            font.pixelSize: Theme.textTitle
            font.weight: Font.DemiBold
            Layout.fillWidth: true
        }
        BodyText {
            id: explanation

            text: "If you quit now, the agent leaves the call and its record is saved. The phone call itself goes on until you hang up."
            color: Theme.muted
            wrapMode: Text.WordWrap
            Layout.fillWidth: true
        }
        RowLayout {
            spacing: Theme.space2
            Layout.topMargin: Theme.space2
            Layout.alignment: Qt.AlignRight

            ActionButton {
                text: "Stop and quit"
                ink: Theme.bad
                ground: Theme.badSoft
                onClicked: {
                    dialog.close();
                    dialog.accepted();
                }
            }
            PrimaryButton {
                id: stay

                text: "Keep the call"
                onClicked: dialog.close()
            }
        }
    }
}
