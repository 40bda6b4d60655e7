#include <gtest/gtest.h>

#include <functional>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QElapsedTimer>

#include "PrivateBus.h"
#include "statusbar/DesktopAppearance.h"

using namespace vostel;

namespace {

bool until(const std::function<bool()>& condition) {
    QElapsedTimer waited;
    for (waited.start(); !condition();) {
        if (waited.elapsed() > 10000) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

// The portal's part that matters here.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    explicit Portal(const QString& address)
        : bus(QDBusConnection::connectToBus(address, QStringLiteral("portal"))) {
        const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
        EXPECT_TRUE(bus.registerObject(
            path, this, QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        EXPECT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

  public Q_SLOTS:
    QDBusVariant Read(const QString&, const QString&) {
        return QDBusVariant(QVariant::fromValue(QDBusVariant(1u)));
    }

  Q_SIGNALS:
    void SettingChanged(const QString& space, const QString& key, const QDBusVariant& value);

  private:
    QDBusConnection bus;
};

}  // namespace

TEST(DesktopAppearance, asksThePortalOnceAndListens) {
    PrivateBus daemon;
    ASSERT_FALSE(daemon.address().isEmpty()) << "dbus-daemon does not start";
    qputenv("DBUS_SESSION_BUS_ADDRESS", daemon.address().toLocal8Bit());
    Portal portal(daemon.address());
    const auto link = BusLink::toSessionBus();
    DesktopAppearance appearance(*link);
    EXPECT_EQ(appearance.orPalette(), Appearance::Light);  // the palette's, while nobody answered
    EXPECT_TRUE(until([&] { return appearance.orPalette() == Appearance::Dark; }));
    int changes = 0;
    QObject::connect(&appearance, &DesktopAppearance::changed, [&] { ++changes; });
    const auto say = [&](const char* space, const char* key, uint value) {
        Q_EMIT portal.SettingChanged(QString::fromLatin1(space), QString::fromLatin1(key),
                                     QDBusVariant(value));
    };
    say("org.freedesktop.appearance", "contrast", 2);
    say("org.gnome.desktop.interface", "color-scheme", 2);
    say("org.freedesktop.appearance", "color-scheme", 1);
    say("org.freedesktop.appearance", "color-scheme", 2);
    EXPECT_TRUE(until([&] { return appearance.orPalette() == Appearance::Light; }));
    EXPECT_EQ(changes, 1);
}

TEST(DesktopAppearance, understandsThePortal) {
    const auto wrapped = [](const QVariant& value) {
        return QVariant::fromValue(QDBusVariant(value));
    };
    EXPECT_EQ(DesktopAppearance::fromPortal(wrapped(wrapped(1u))), Appearance::Dark);
    EXPECT_EQ(DesktopAppearance::fromPortal(wrapped(2u)), Appearance::Light);
    for (const QVariant& value : {wrapped(0u), wrapped(7u), QVariant(), wrapped(QByteArray("x"))}) {
        EXPECT_EQ(DesktopAppearance::fromPortal(value), std::nullopt);
    }
}

#include "DesktopAppearanceTests.moc"
