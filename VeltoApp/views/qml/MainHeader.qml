import QtQuick
import QtQuick.Layouts
import Velto

// Whose window this is, and whether calls can be placed.
ColumnLayout {
    id: header

    required property bool ready

    signal readinessWanted
    signal settingsWanted

    spacing: Theme.space3

    RowLayout {
        spacing: Theme.space3
        Layout.fillWidth: true

        Rectangle {
            implicitWidth: 44
            implicitHeight: 44
            radius: Theme.radius
            color: Theme.accent

            Icon {
                anchors.centerIn: parent
                name: "waveform"
                color: Theme.accentInk
                size: 26
                width: size
                height: size
            }
        }
        ColumnLayout {
            spacing: 0
            Layout.fillWidth: true

            BodyText {
                text: "Velto"
                font.pixelSize: Theme.textLarge
                font.weight: Font.Bold
                Accessible.role: Accessible.Heading
            }
            BodyText {
                text: "AI voice agent for cellular calls"
                color: Theme.muted
                elide: Text.ElideRight
                Layout.fillWidth: true
            }
        }
        ActionButton {
            text: header.ready ? "Ready" : "Readiness"
            symbol: header.ready ? "checkmark.seal.fill" : "exclamationmark.triangle.fill"
            ink: header.ready ? Theme.good : Theme.warning
            ground: header.ready ? Theme.goodSoft : Theme.warningSoft
            onClicked: header.readinessWanted()
        }
        SecondaryButton {
            text: "Settings"
            symbol: "gearshape"
            onClicked: header.settingsWanted()
        }
    }
    RowLayout {
        spacing: Theme.space2
        Layout.fillWidth: true

        BodyText {
            text: header.ready ? "All set" : "Fix what's missing"
            font.weight: Font.DemiBold
        }
        BodyText {
            text: "Clickless dial · one agent per call"
            color: Theme.muted
            elide: Text.ElideRight
            Layout.fillWidth: true
        }
    }
}
