// The checks that a person runs by hand, and what they found.
#pragma once

#include "VeltoShared/core/Executors.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <string>

namespace velto {

/// Main thread. What is looked at may be silent: it is looked at elsewhere, one job at a time.
class DiagnosticsModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(QString report READ report NOTIFY reportChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)

  public:
    using QObject::QObject;

    QString report() const { return report_; }
    bool busy() const { return busy_; }

    Q_INVOKABLE void runChecks();
    /// Takes some five seconds.
    Q_INVOKABLE void loopbackProbe();
    Q_INVOKABLE void restoreDevices();
    Q_INVOKABLE void revealLog();

  Q_SIGNALS:
    void reportChanged();
    void busyChanged();

  private:
    void start(asio::awaitable<std::string> job);
    static asio::awaitable<void> finish(QPointer<DiagnosticsModel> self, asio::awaitable<std::string> job);

    QString report_ = QStringLiteral("(run checks)");
    bool busy_ = false;
};

} // namespace velto
