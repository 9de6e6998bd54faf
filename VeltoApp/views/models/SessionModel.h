// The call session as the windows show it.
#pragma once

#include "VeltoApp/session/NativeCallSession.h"
#include "VeltoApp/views/models/Mirror.h"
#include "VeltoApp/views/models/OnceATurn.h"
#include "VeltoApp/views/models/SessionTrouble.h"
#include "VeltoApp/views/models/TranscriptModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velto {

/// Main thread.
class SessionModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    /// The word of the session's state: "idle", "dialing", …
    Q_PROPERTY(QString state READ state NOTIFY stateChanged)
    Q_PROPERTY(bool running READ running NOTIFY runningChanged)
    Q_PROPERTY(QString number READ number WRITE setNumber NOTIFY numberChanged)
    Q_PROPERTY(QString audioStats READ audioStats NOTIFY audioStatsChanged)
    /// Since the session's start, and of the last one when none runs: "0:07"; empty before the first. Nothing
    /// ticks while no session runs.
    Q_PROPERTY(QString runningTime READ runningTime NOTIFY runningTimeChanged)
    /// What went wrong with the latest session, in a sentence; empty: nothing.
    Q_PROPERTY(QString trouble READ trouble NOTIFY troubleChanged)
    /// Of the session that runs, or that ran last.
    Q_PROPERTY(velto::TranscriptModel* transcript READ transcript CONSTANT)

  public:
    explicit SessionModel(std::shared_ptr<NativeCallSession> session, QObject* parent = nullptr);

    QString state() const { return shown(rawValue(state_())); }
    bool running() const { return running_(); }
    QString number() const { return shown(number_()); }
    void setNumber(const QString& number);
    QString audioStats() const { return shown(audioStats_()); }
    QString runningTime() const;
    QString trouble() const { return shown(sessionTrouble(failure_())); }
    TranscriptModel* transcript() { return &transcript_; }

    /// With `dial` it dials the number, without it waits for a call that the user places.
    Q_INVOKABLE void start(const QString& goal, bool dial);
    /// Calls this number. Nothing happens while a session runs, whose record is to keep its number.
    Q_INVOKABLE void redial(const QString& number, const QString& goal);
    /// The phone call itself is not hung up.
    Q_INVOKABLE void stop();

  Q_SIGNALS:
    void stateChanged();
    void runningChanged();
    void numberChanged();
    void audioStatsChanged();
    void runningTimeChanged();
    void troubleChanged();

  private:
    void timeRunning();

    std::shared_ptr<NativeCallSession> session_;
    Mirror<NativeCallSession::State> state_;
    Mirror<bool> running_;
    Mirror<std::string> number_;
    Mirror<std::string> audioStats_;
    Mirror<NativeCallSession::Failure> failure_;
    TranscriptModel transcript_;
    std::optional<Clock::SteadyTime> startedAt_;
    Clock::SteadyTime seenAt_{};
    std::unique_ptr<Timer> second_;
    OnceATurn look_; ///< at the transcript, once for all that happened in a turn of the event loop
    Subscription anyChange_;
};

} // namespace velto
