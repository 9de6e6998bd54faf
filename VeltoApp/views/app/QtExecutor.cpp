#include "VeltoApp/views/app/QtExecutor.h"

#include <QCoreApplication>

namespace velto {

void QtLoop::post(std::unique_ptr<QEvent> work) {
    QCoreApplication::postEvent(&receiver_, work.release());
}

bool QtLoop::Receiver::event(QEvent* event) {
    if (event->type() != QEvent::User)
        return QObject::event(event);
    static_cast<Work*>(event)->run();
    return true;
}

} // namespace velto
