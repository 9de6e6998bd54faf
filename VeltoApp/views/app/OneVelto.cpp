#include "VeltoApp/views/app/OneVelto.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace velto {
namespace {

const QString kName = QStringLiteral("org.velto.Velto");
const QString kPath = QStringLiteral("/org/velto/Velto");
const QString kInterface = QStringLiteral("org.freedesktop.Application");
const QString kToken = QStringLiteral("activation-token");
constexpr const char* kTokenVariable = "XDG_ACTIVATION_TOKEN";
constexpr int kPatience = 3000; // ms

/// What lets a window come to the front on desktops that do not let any program do so.
QVariantMap platformData() {
    const auto token = qEnvironmentVariable(kTokenVariable);
    return token.isEmpty() ? QVariantMap() : QVariantMap{{kToken, token}};
}

} // namespace

OneVelto::Role OneVelto::settle() {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return Role::noBus;
    bus.registerObject(kPath, this, QDBusConnection::ExportScriptableSlots);
    if (bus.registerService(kName))
        return Role::first;
    auto call = QDBusMessage::createMethodCall(kName, kPath, kInterface, QStringLiteral("Activate"));
    call << platformData();
    const auto reply = bus.call(call, QDBus::Block, kPatience);
    return reply.type() == QDBusMessage::ReplyMessage ? Role::shown : Role::silent;
}

void OneVelto::Activate(const QVariantMap& platformData) {
    if (const auto token = platformData.value(kToken).toString(); !token.isEmpty())
        qputenv(kTokenVariable, token.toUtf8());
    Q_EMIT wanted();
}

} // namespace velto
