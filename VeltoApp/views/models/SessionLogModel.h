// The lines that the session has logged, as one text.
#pragma once

#include "VeltoApp/session/NativeCallSession.h"
#include "VeltoApp/views/models/Mirror.h"
#include "VeltoApp/views/models/OnceATurn.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velto {

/// Main thread. Follows the session once a turn of the event loop, however many lines that brings.
class SessionLogModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(QString text READ text NOTIFY textChanged)

  public:
    explicit SessionLogModel(std::shared_ptr<NativeCallSession> session, QObject* parent = nullptr);

    QString text() const;

  Q_SIGNALS:
    void textChanged();

  private:
    std::shared_ptr<NativeCallSession> session_;
    OnceATurn change_{[this] { textChanged(); }};
    Subscription subscription_;
};

} // namespace velto
