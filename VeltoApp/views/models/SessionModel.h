// The call session as the windows show it.
#pragma once

#include "VeltoApp/session/NativeCallSession.h"
#include "VeltoApp/views/models/Mirror.h"

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

  public:
    explicit SessionModel(std::shared_ptr<NativeCallSession> session, QObject* parent = nullptr);

    QString state() const { return shown(rawValue(state_())); }
    bool running() const { return running_(); }
    QString number() const { return shown(number_()); }
    void setNumber(const QString& number);
    QString audioStats() const { return shown(audioStats_()); }

    /// With `dial` it dials the number, without it waits for a call that the user places.
    Q_INVOKABLE void start(const QString& goal, bool dial);
    /// The phone call itself is not hung up.
    Q_INVOKABLE void stop();

  Q_SIGNALS:
    void stateChanged();
    void runningChanged();
    void numberChanged();
    void audioStatsChanged();

  private:
    std::shared_ptr<NativeCallSession> session_;
    Mirror<NativeCallSession::State> state_;
    Mirror<bool> running_;
    Mirror<std::string> number_;
    Mirror<std::string> audioStats_;
};

} // namespace velto
