import QtQuick
import QtQuick.Layouts
import Velto

// What is going on, what is missing, and what is being said.
SectionCard {
    id: section

    required property AppModel app
    readonly property bool checkingKeys: app.agent.validating && !app.agent.apiKeyConfigured
    readonly property string hint: {
        if (!app.agent.apiKeyConfigured)
            return checkingKeys ? "" : "Add a Gemini or OpenAI key in Settings → Readiness.";
        return app.readiness.axReady ? "" : "Grant Accessibility in System Settings so Velto can dial and detect calls.";
    }

    title: "Status"

    SessionStateLine {
        session: section.app.session
        Layout.fillWidth: true
    }
    StatusLine {
        good: section.app.agent.apiKeyConfigured
        pending: section.checkingKeys
        text: section.checkingKeys ? "Validating keys…" : good ? "AI key ready" : "AI key missing"
        Layout.fillWidth: true
    }
    StatusLine {
        good: section.app.audio.bridgeInstalled
        pending: section.app.audio.status.length === 0
        text: good ? "Audio bridge ready · routed only while a call is active; your devices are restored after." : "Audio bridge: " + section.app.audio.status
        Layout.fillWidth: true
    }
    Notice {
        text: section.app.session.trouble
        symbol: "exclamationmark.circle.fill"
        ink: Theme.bad
        ground: Theme.badSoft
        Layout.fillWidth: true
    }
    Notice {
        text: section.hint
        symbol: "exclamationmark.triangle.fill"
        ink: Theme.warning
        ground: Theme.warningSoft
        Layout.fillWidth: true
    }
    Divider {
        Layout.fillWidth: true
    }
    TranscriptView {
        transcript: section.app.session.transcript
        emptyText: section.app.session.running ? "Nobody has said anything yet." : "What is said in a call appears here."
        Layout.fillWidth: true
        Layout.fillHeight: true
    }
}
