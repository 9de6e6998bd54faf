// What every view is given: a model for each object of the application.
#pragma once

#include "VeltoApp/views/models/AgentModel.h"
#include "VeltoApp/views/models/AudioModel.h"
#include "VeltoApp/views/models/HistoryModel.h"
#include "VeltoApp/views/models/ReadinessModel.h"
#include "VeltoApp/views/models/SessionModel.h"

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
    Q_PROPERTY(velto::HistoryModel* history READ history CONSTANT)
    Q_PROPERTY(velto::ReadinessModel* readiness READ readiness CONSTANT)
    /// The newest calls of the history.
    Q_PROPERTY(velto::HistoryModel* recents READ recents CONSTANT)
    Q_PROPERTY(velto::SessionModel* session READ session CONSTANT)
    /// Of the settings window, kept in the preferences: "readiness", "general" or "debug".
    Q_PROPERTY(QString settingsTab READ settingsTab WRITE setSettingsTab NOTIFY settingsTabChanged)

  public:
    /// The objects of `app` must outlive it.
    explicit AppModel(const VeltoApp& app);

    AgentModel* agent() { return &agent_; }
    AudioModel* audio() { return &audio_; }
    HistoryModel* history() { return &history_; }
    ReadinessModel* readiness() { return &readiness_; }
    HistoryModel* recents() { return &recents_; }
    SessionModel* session() { return &session_; }
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
    HistoryModel history_;
    ReadinessModel readiness_;
    HistoryModel recents_;
    SessionModel session_;

    AppSettings& settings_;
    QString settingsTab_;
};

} // namespace velto
