// What every view is given: a model for each object of the application.
#pragma once

#include "VeltoApp/views/models/AgentModel.h"
#include "VeltoApp/views/models/AudioModel.h"
#include "VeltoApp/views/models/DiagnosticsModel.h"
#include "VeltoApp/views/models/DriversModel.h"
#include "VeltoApp/views/models/HistoryModel.h"
#include "VeltoApp/views/models/KeyModel.h"
#include "VeltoApp/views/models/ReadinessModel.h"
#include "VeltoApp/views/models/RecordingsModel.h"
#include "VeltoApp/views/models/SessionLogModel.h"
#include "VeltoApp/views/models/SessionModel.h"
#include "VeltoApp/views/models/SettingsModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velto {

class AppSettings;
struct VeltoApp;

/// Main thread.
class AppModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(velto::AgentModel* agent READ agent CONSTANT)
    Q_PROPERTY(velto::AudioModel* audio READ audio CONSTANT)
    Q_PROPERTY(velto::DiagnosticsModel* diagnostics READ diagnostics CONSTANT)
    Q_PROPERTY(velto::DriversModel* drivers READ drivers CONSTANT)
    Q_PROPERTY(velto::KeyModel* geminiKey READ geminiKey CONSTANT)
    Q_PROPERTY(velto::HistoryModel* history READ history CONSTANT)
    Q_PROPERTY(velto::KeyModel* openaiKey READ openaiKey CONSTANT)
    Q_PROPERTY(velto::ReadinessModel* readiness READ readiness CONSTANT)
    /// The newest calls of the history.
    Q_PROPERTY(velto::HistoryModel* recents READ recents CONSTANT)
    Q_PROPERTY(velto::RecordingsModel* recordings READ recordings CONSTANT)
    Q_PROPERTY(velto::SessionModel* session READ session CONSTANT)
    Q_PROPERTY(velto::SessionLogModel* sessionLog READ sessionLog CONSTANT)
    Q_PROPERTY(velto::SettingsModel* settings READ settings CONSTANT)
    /// Of the settings window, kept in the preferences: "readiness", "general" or "debug".
    Q_PROPERTY(QString settingsTab READ settingsTab WRITE setSettingsTab NOTIFY settingsTabChanged)

  public:
    /// The objects of `app` must outlive it.
    explicit AppModel(const VeltoApp& app);

    AgentModel* agent() { return &agent_; }
    AudioModel* audio() { return &audio_; }
    DiagnosticsModel* diagnostics() { return &diagnostics_; }
    DriversModel* drivers() { return &drivers_; }
    KeyModel* geminiKey() { return &geminiKey_; }
    HistoryModel* history() { return &history_; }
    KeyModel* openaiKey() { return &openaiKey_; }
    ReadinessModel* readiness() { return &readiness_; }
    HistoryModel* recents() { return &recents_; }
    RecordingsModel* recordings() { return &recordings_; }
    SessionModel* session() { return &session_; }
    SessionLogModel* sessionLog() { return &sessionLog_; }
    SettingsModel* settings() { return &settings_; }
    const QString& settingsTab() const { return settingsTab_; }
    void setSettingsTab(const QString& tab);

    /// Repairs default devices that a call left switched, looks at sound and readiness, and on a first run on
    /// a computer that is not ready wants the settings window to open.
    Q_INVOKABLE void mainWindowShown();
    /// Whoever comes back may have been granting something.
    Q_INVOKABLE void mainWindowActivated();

  Q_SIGNALS:
    void settingsTabChanged();
    /// The settings window is to open, on the tab that has been set.
    void setupWanted();

  private:
    AgentModel agent_;
    AudioModel audio_;
    DiagnosticsModel diagnostics_;
    DriversModel drivers_;
    KeyModel geminiKey_;
    HistoryModel history_;
    KeyModel openaiKey_;
    ReadinessModel readiness_;
    HistoryModel recents_;
    RecordingsModel recordings_;
    SessionModel session_;
    SessionLogModel sessionLog_;

    SettingsModel settings_;
    AppSettings& stored_;
    QString settingsTab_;
};

} // namespace velto
