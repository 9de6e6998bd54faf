#include "VeltoApp/views/models/SessionLogModel.h"

namespace velto {

SessionLogModel::SessionLogModel(std::shared_ptr<NativeCallSession> session, QObject* parent)
    : QObject(parent), session_(std::move(session)),
      subscription_(session_->log.observe([this](const auto&) { change_.ask(); })) {}

QString SessionLogModel::text() const {
    return shown(session_->log()).join(QLatin1Char('\n'));
}

} // namespace velto
