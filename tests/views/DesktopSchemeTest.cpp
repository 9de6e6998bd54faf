// A portal on a session bus of the test's own says whether the desktop prefers dark.
#include "VeltoQt/DesktopScheme.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace velto {
namespace {

const QString kPath = "/org/freedesktop/portal/desktop";
const QString kInterface = "org.freedesktop.portal.Settings";
const QString kGroup = "org.freedesktop.appearance";
const QString kKey = "color-scheme";

class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    Portal() {
        bus.registerObject(kPath, this, QDBusConnection::ExportScriptableSlots);
        bus.registerService("org.freedesktop.portal.Desktop");
    }
    ~Portal() override { QDBusConnection::disconnectFromBus("portal"); }

    void change(const QString& key, unsigned value) {
        auto signal = QDBusMessage::createSignal(kPath, kInterface, "SettingChanged");
        signal << kGroup << key << QVariant::fromValue(QDBusVariant(value));
        bus.send(signal);
    }

  public Q_SLOTS:
    Q_SCRIPTABLE QDBusVariant Read(const QString& group, const QString& key) {
        // Wrapped twice, as portals do.
        return QDBusVariant(QVariant::fromValue(QDBusVariant(group == kGroup && key == kKey ? 1u : 2u)));
    }

  private:
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "portal");
};

TEST(DesktopSchemeTest, AsksThePortalAndFollowsIt) {
    int argc = 1;
    std::string name = "desktop_scheme_test";
    std::array arguments{name.data()};
    const QCoreApplication application(argc, arguments.data());
    Portal portal;
    DesktopScheme scheme;
    EXPECT_FALSE(scheme.prefersDark());
    const QSignalSpy changes(&scheme, &DesktopScheme::changed);
    EXPECT_TRUE(QTest::qWaitFor([&] { return scheme.prefersDark(); }));
    portal.change("accent-color", 0);
    portal.change(kKey, 1);
    portal.change(kKey, 2);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !scheme.prefersDark(); }));
    EXPECT_EQ(changes.count(), 2);
}

} // namespace
} // namespace velto

#include "DesktopSchemeTest.moc"
