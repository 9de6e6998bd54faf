// What every view is given: a model for each object of the application.
#pragma once

#include "VeltoApp/app/VeltoApp.h"
#include "VeltoApp/views/models/SessionModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velto {

/// Main thread.
class AppModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(velto::SessionModel* session READ session CONSTANT)

  public:
    explicit AppModel(const VeltoApp& app) : session_(app.nativeSession) {}

    SessionModel* session() { return &session_; }

  private:
    SessionModel session_;
};

} // namespace velto
