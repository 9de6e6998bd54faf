// The readiness checks as the windows show them, and what mends them.
#pragma once

#include "VeltoApp/state/ReadinessState.h"
#include "VeltoApp/views/models/Mirror.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velto {

/// Main thread.
class ReadinessModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(bool ready READ ready NOTIFY readyChanged)
    Q_PROPERTY(bool axReady READ axReady NOTIFY axReadyChanged)
    Q_PROPERTY(bool micReady READ micReady NOTIFY micReadyChanged)
    Q_PROPERTY(bool driverReady READ driverReady NOTIFY driverReadyChanged)
    /// Why pressing "Enable" has not helped; empty when it has, or when the desktop shows its settings.
    Q_PROPERTY(QString axTrouble READ axTrouble NOTIFY axTroubleChanged)
    /// Why pressing "Allow" has not helped; empty when it has.
    Q_PROPERTY(QString micTrouble READ micTrouble NOTIFY micTroubleChanged)

  public:
    explicit ReadinessModel(std::shared_ptr<ReadinessState> readiness, QObject* parent = nullptr);

    bool ready() const { return axReady() && micReady() && driverReady(); }
    bool axReady() const { return axReady_(); }
    bool micReady() const { return micReady_(); }
    bool driverReady() const { return driverReady_(); }
    QString axTrouble() const { return axReady() ? QString() : axTrouble_; }

    QString micTrouble() const { return micReady() ? QString() : micTrouble_; }

    Q_INVOKABLE void refresh();
    Q_INVOKABLE void requestMic();
    /// Asks for access, once in a run, shows the desktop's page of accessibility settings, and looks again.
    Q_INVOKABLE void enableAccessibility();

  Q_SIGNALS:
    void readyChanged();
    void axReadyChanged();
    void micReadyChanged();
    void driverReadyChanged();
    void axTroubleChanged();
    void micTroubleChanged();

  private:
    static asio::awaitable<void> showSettings(QPointer<ReadinessModel> self);
    static asio::awaitable<void> explainMicrophone(QPointer<ReadinessModel> self);

    std::shared_ptr<ReadinessState> readiness_;
    Mirror<bool> axReady_;
    Mirror<bool> micReady_;
    Mirror<bool> driverReady_;
    QString axTrouble_;
    QString micTrouble_;
};

} // namespace velto
