#include "VeltoQt/DisplayGuard.h"

#include <QString>
#include <QtGlobal>

#include <cstdlib>
#include <iostream>

namespace velto {
namespace {

std::string& guardPrefix() {
    static std::string text;
    return text;
}

void endWithoutDisplay(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    static std::string reason; // the warning that comes before the end says more than the end
    if (type != QtFatalMsg) {
        if (reason.empty())
            reason = message.trimmed().toStdString();
        return;
    }
    std::cerr << guardPrefix() << (reason.empty() ? message.toStdString() : reason) << std::endl;
    std::_Exit(1);
}

} // namespace

DisplayGuard::DisplayGuard(std::string prefix) {
    guardPrefix() = std::move(prefix);
    ::qInstallMessageHandler(endWithoutDisplay);
}

DisplayGuard::~DisplayGuard() {
    ::qInstallMessageHandler(nullptr);
}

} // namespace velto
