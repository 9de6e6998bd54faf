#include "VeltoApp/views/models/SessionLogModel.h"

#include <utility>

namespace velto {

SessionLogModel::SessionLogModel(std::shared_ptr<NativeCallSession> session, QObject* parent)
    : QObject(parent), session_(std::move(session)),
      subscription_(session_->log.observe([this](const auto&) { schedule(); })) {}

QString SessionLogModel::text() const {
    return shown(session_->log()).join(QLatin1Char('\n'));
}

void SessionLogModel::schedule() {
    if (!std::exchange(scheduled_, true))
        QMetaObject::invokeMethod(this, &SessionLogModel::update, Qt::QueuedConnection);
}

void SessionLogModel::update() {
    scheduled_ = false;
    textChanged();
}

} // namespace velto
