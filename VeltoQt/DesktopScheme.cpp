#include "VeltoQt/DesktopScheme.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace velto {
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

DesktopScheme::DesktopScheme() {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
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

void DesktopScheme::settingChanged(const QDBusMessage& signal) {
    const auto arguments = signal.arguments();
    if (arguments.size() == 3 && arguments[0] == kGroup && arguments[1] == kKey)
        apply(arguments[2]);
}

void DesktopScheme::apply(const QVariant& scheme) {
    const bool dark = unwrapped(scheme).toUInt() == kPrefersDark;
    if (dark == prefersDark_)
        return;
    prefersDark_ = dark;
    Q_EMIT changed();
}

} // namespace velto
