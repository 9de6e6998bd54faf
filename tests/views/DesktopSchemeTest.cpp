// A portal on a session bus of the test's own says whether the desktop prefers dark.
#include "VeltoQt/DesktopScheme.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QTest>

#include <gtest/gtest.h>

namespace velto {
namespace {

constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kGroup = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";

class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    Portal() {
        bus.registerObject(QLatin1String(kPath), this, QDBusConnection::ExportScriptableSlots);
        bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

    void change(const char* key, unsigned value) {
        auto signal = QDBusMessage::createSignal(QLatin1String(kPath), QLatin1String(kInterface),
                                                 QStringLiteral("SettingChanged"));
        signal << QLatin1String(kGroup) << QLatin1String(key) << QVariant::fromValue(QDBusVariant(value));
        bus.send(signal);
    }

  public Q_SLOTS:
    Q_SCRIPTABLE QDBusVariant Read(const QString& group, const QString& key) {
        const bool asked = group == QLatin1String(kGroup) && key == QLatin1String(kKey);
        // Wrapped twice, as portals do.
        return QDBusVariant(QVariant::fromValue(QDBusVariant(asked ? 1u : 2u)));
    }

  private:
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
};

TEST(DesktopSchemeTest, AsksThePortalAndFollowsIt) {
    int argc = 1;
    std::string name = "desktop_scheme_test";
    std::array arguments{name.data()};
    const QCoreApplication application(argc, arguments.data());
    Portal portal;
    DesktopScheme scheme;
    EXPECT_FALSE(scheme.prefersDark());
    int changes = 0;
    QObject::connect(&scheme, &DesktopScheme::changed, [&] { ++changes; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return scheme.prefersDark(); }));
    portal.change("accent-color", 0);
    portal.change(kKey, 1);
    portal.change(kKey, 2);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !scheme.prefersDark(); }));
    EXPECT_EQ(changes, 2);
}

} // namespace
} // namespace velto

#include "DesktopSchemeTest.moc"
