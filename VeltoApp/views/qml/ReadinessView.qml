import QtQuick
import QtQuick.Layouts
import Velto

// The checklist: what a call needs, what of it is missing, and what brings it.
SettingsPane {
    id: pane

    required property AppModel app

    function recheck() {
        app.readiness.refresh();
        app.agent.refreshKey();
    }

    Component.onCompleted: recheck()

    Connections {
        target: pane.app.drivers
        function onBusyChanged() {
            if (!pane.app.drivers.busy)
                pane.app.readiness.refresh();
        }
    }
    Connections {
        // What was missing may have been granted elsewhere.
        target: pane.Window.window
        function onActiveChanged() {
            if (pane.Window.active)
                pane.app.readiness.refresh();
        }
    }

    RowLayout {
        spacing: Theme.space4
        Layout.fillWidth: true

        Icon {
            name: pane.app.readiness.ready ? "checkmark.seal.fill" : "exclamationmark.triangle.fill"
            color: pane.app.readiness.ready ? Theme.good : Theme.warning
            size: Math.round(40 * Theme.textScale)
        }
        ColumnLayout {
            spacing: 2
            Layout.fillWidth: true

            BodyText {
                text: pane.app.readiness.ready ? "Ready" : "Not ready yet"
                font.pixelSize: Theme.textLarge
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
                Accessible.role: Accessible.Heading
                Layout.fillWidth: true
            }
            FootnoteText {
                text: pane.app.readiness.ready ? "Velto can place AI calls." : "Fix the items below to get going."
                font.pixelSize: Theme.textBody
            }
        }
        SecondaryButton {
            text: "Re-check"
            symbol: "arrow.clockwise"
            onClicked: pane.recheck()
        }
    }

    SectionCard {
        title: "Permissions & driver"
        Layout.fillWidth: true

        ReadinessRow {
            title: "Accessibility"
            detail: "Lets Velto press Phone's Call button and detect the call."
            passed: pane.app.readiness.axReady
            action: "Enable"
            trouble: pane.app.readiness.axTrouble
            onRequested: {
                pane.app.readiness.enableAccessibility();
                const window = pane.Window.window as Window;
                window.raise();
                window.requestActivate();
            }
        }
        Divider {
            Layout.fillWidth: true
        }
        ReadinessRow {
            title: "Microphone"
            detail: "Captures the call audio for the AI agent."
            passed: pane.app.readiness.micReady
            action: "Allow"
            trouble: pane.app.readiness.micTrouble
            onRequested: pane.app.readiness.requestMic()
        }
        Divider {
            Layout.fillWidth: true
        }
        ReadinessRow {
            title: "Audio driver"
            detail: "VeltoLoop / VeltoVoice virtual devices."
            passed: pane.app.readiness.driverReady
            action: "Install"
            progress: pane.app.drivers.busy ? "Installing audio drivers…" : ""
            trouble: pane.app.drivers.log
            onRequested: pane.app.drivers.install()
        }
    }

    SectionCard {
        title: "API keys"
        footnote: "Bring your own key. One valid provider is enough. Keys are stored in the macOS Keychain and verified with a small live call."
        Layout.fillWidth: true

        KeyRow {
            key: pane.app.geminiKey
        }
        KeyRow {
            key: pane.app.openaiKey
        }
        BusyLine {
            visible: pane.app.agent.validating
            text: "Validating keys…"
        }
    }

    SectionCard {
        title: "Voice provider"
        Layout.fillWidth: true

        FormRow {
            label: "Use"

            Picker {
                id: provider
                label: "Use"
                textRole: "text"
                valueRole: "value"
                model: [
                    {
                        text: "Automatic",
                        value: ""
                    },
                    {
                        text: "Gemini Live",
                        value: "gemini"
                    },
                    {
                        text: "OpenAI Realtime",
                        value: "openai"
                    }
                ]
                currentIndex: Math.max(0, indexOfValue(pane.app.settings.provider))
                onActivated: pane.app.settings.provider = currentValue
                Component.onCompleted: currentIndex = Qt.binding(() => Math.max(0, indexOfValue(pane.app.settings.provider)))
                Layout.fillWidth: true
            }
        }
    }

    SectionCard {
        title: "Voice"
        footnote: "Applies to the matching provider (Automatic uses whichever key is valid)."
        Layout.fillWidth: true

        FormRow {
            label: "Gemini voice"

            NamePicker {
                label: "Gemini voice"
                names: pane.app.settings.geminiVoices
                current: pane.app.settings.geminiVoice
                onChosen: name => pane.app.settings.geminiVoice = name
                Layout.fillWidth: true
            }
        }
        FormRow {
            label: "OpenAI voice"

            NamePicker {
                label: "OpenAI voice"
                names: pane.app.settings.openaiVoices
                current: pane.app.settings.openaiVoice
                onChosen: name => pane.app.settings.openaiVoice = name
                Layout.fillWidth: true
            }
        }
    }
}
