// What every view is given: a model for each object of the application.
#pragma once

#include "VeltoApp/app/VeltoApp.h"
#include "VeltoApp/views/models/AudioModel.h"
#include "VeltoApp/views/models/ReadinessModel.h"
#include "VeltoApp/views/models/SessionModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velto {

/// Main thread.
class AppModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(velto::AudioModel* audio READ audio CONSTANT)
    Q_PROPERTY(velto::ReadinessModel* readiness READ readiness CONSTANT)
    Q_PROPERTY(velto::SessionModel* session READ session CONSTANT)

  public:
    explicit AppModel(const VeltoApp& app)
        : audio_(app.audio), readiness_(app.setup), session_(app.nativeSession) {}

    AudioModel* audio() { return &audio_; }
    ReadinessModel* readiness() { return &readiness_; }
    SessionModel* session() { return &session_; }

  private:
    AudioModel audio_;
    ReadinessModel readiness_;
    SessionModel session_;
};

} // namespace velto
