#include "VeltoApp/views/models/SessionModel.h"

namespace velto {

SessionModel::SessionModel(std::shared_ptr<NativeCallSession> session, QObject* parent)
    : QObject(parent), session_(std::move(session)), state_(session_->state, [this] { stateChanged(); }),
      running_(session_->running, [this] { runningChanged(); }),
      number_(session_->number, [this] { numberChanged(); }),
      audioStats_(session_->audioStats, [this] { audioStatsChanged(); }) {}

void SessionModel::setNumber(const QString& number) {
    session_->number.set(number.toStdString());
}

void SessionModel::start(const QString& goal, bool dial) {
    session_->start(goal.toStdString(), dial);
}

void SessionModel::stop() {
    session_->stop();
}

} // namespace velto
