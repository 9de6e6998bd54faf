#include "VeltoPhone/views/DesktopColours.h"

#include "VeltoPhone/views/Look.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

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
                SLOT(settingChanged(QString, QString, QDBusVariant)));
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

void DesktopColours::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == kGroup && key == kKey)
        apply(value.variant());
}

void DesktopColours::apply(const QVariant& scheme) {
    QApplication::setPalette(unwrapped(scheme).toUInt() == kPrefersDark ? darkPalette() : own_);
}

} // namespace velto::phone
