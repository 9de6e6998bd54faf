#include "VeltoPhone/views/DesktopColours.h"

#include "VeltoPhone/views/Look.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace velto::phone {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kGroup = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");
constexpr unsigned kPrefersDark = 1;

/// The portal's older operation wraps the value twice.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

DesktopColours::DesktopColours() : own_(QApplication::palette()) {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || Look::isDark(own_))
        return;
    bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QDBusMessage)));
    auto question = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
    question << kGroup << kKey;
    auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (!reply.isError())
            apply(reply.value().variant());
        answer->deleteLater();
    });
}

void DesktopColours::settingChanged(const QDBusMessage& signal) {
    const auto arguments = signal.arguments();
    if (arguments.size() == 3 && arguments[0] == kGroup && arguments[1] == kKey)
        apply(arguments[2]);
}

void DesktopColours::apply(const QVariant& scheme) {
    QApplication::setPalette(unwrapped(scheme).toUInt() == kPrefersDark ? darkPalette() : own_);
}

} // namespace velto::phone
