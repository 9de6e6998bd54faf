// The audio drivers as the windows show them.
#pragma once

#include "VeltoApp/drivers/DriverState.h"
#include "VeltoApp/views/models/Mirror.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velto {

/// Main thread.
class DriversModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(QString log READ log NOTIFY logChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    /// What is installed, in one line.
    Q_PROPERTY(QString installed READ installed NOTIFY placesChanged)
    /// The folder that drivers are installed from.
    Q_PROPERTY(QString source READ source NOTIFY placesChanged)

  public:
    explicit DriversModel(std::shared_ptr<DriverState> drivers, QObject* parent = nullptr);

    QString log() const { return shown(log_()); }
    bool busy() const { return busy_(); }
    QString installed() const { return installed_; }
    QString source() const { return source_; }

    /// Looks at the folders again, as it does after each job.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void install();
    Q_INVOKABLE void uninstall();
    Q_INVOKABLE void restartCoreAudio();

  Q_SIGNALS:
    void logChanged();
    void busyChanged();
    void placesChanged();

  private:
    std::shared_ptr<DriverState> drivers_;
    Mirror<std::string> log_;
    Mirror<bool> busy_;
    QString installed_;
    QString source_;
};

} // namespace velto
