#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "app/BatteryWatch.h"
#include "app/LoginItem.h"
#include "statusbar/tests/PrivateBus.h"

// The power service as it is on a bus: one property and its signal.
class FakeUPower : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.UPower")
    Q_PROPERTY(bool OnBattery READ isOnBattery)

  public:
    FakeUPower(const QString& address, bool battery)
        : bus(QDBusConnection::connectToBus(address, QStringLiteral("power"))), onBattery(battery) {
        bus.registerObject(path, this, QDBusConnection::ExportAllProperties);
        bus.registerService(QStringLiteral("org.freedesktop.UPower"));
    }
    ~FakeUPower() override { QDBusConnection::disconnectFromBus(QStringLiteral("power")); }
    bool isOnBattery() const { return onBattery; }
    void set(bool battery) {
        onBattery = battery;
        QDBusMessage signal =
            QDBusMessage::createSignal(path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                       QStringLiteral("PropertiesChanged"));
        signal.setArguments({QStringLiteral("org.freedesktop.UPower"),
                             QVariantMap{{QStringLiteral("OnBattery"), battery}}, QStringList()});
        bus.send(signal);
    }

  private:
    const QString path = QStringLiteral("/org/freedesktop/UPower");
    QDBusConnection bus;
    bool onBattery;
};

namespace vostel {
namespace {

// Catches a state that is not read at the start, a change that is missed, and a service that dies.
TEST(BatteryWatchTest, followsThePowerService) {
    const PrivateBus bus;
    auto power = std::make_unique<FakeUPower>(bus.address(), true);
    int changes = 0;
    BatteryWatch watch(QDBusConnection::connectToBus(bus.address(), QStringLiteral("watch")),
                       [&](bool) { ++changes; });
    EXPECT_FALSE(watch.isOnBattery());
    EXPECT_TRUE(waitUntil([&] { return watch.isOnBattery(); }));
    power->set(false);
    EXPECT_TRUE(waitUntil([&] { return !watch.isOnBattery(); }));
    power->set(true);
    EXPECT_TRUE(waitUntil([&] { return watch.isOnBattery(); }));
    power.reset();
    EXPECT_TRUE(waitUntil([&] { return !watch.isOnBattery(); }));
    power = std::make_unique<FakeUPower>(bus.address(), true);
    EXPECT_TRUE(waitUntil([&] { return watch.isOnBattery(); }));
    EXPECT_EQ(changes, 5);
    QDBusConnection::disconnectFromBus(QStringLiteral("watch"));
}

TEST(LoginItemTest, isEnabledAsTheEntrySays) {
    const QTemporaryDir home;
    const QString folder = home.filePath(QStringLiteral("a/autostart"));
    const QString path = folder + QStringLiteral("/com.vostel.app.desktop");
    LoginItem item(folder, QStringLiteral("/opt/my apps/100% \"$HOME\"/Vostel-x86_64.AppImage"));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(item.apply(false));
    EXPECT_TRUE(item.apply(true));
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_TRUE(file.readAll().contains(
        "\nExec=\"/opt/my apps/100%% \\\\\"\\\\$HOME\\\\\"/Vostel-x86_64.AppImage\"\n"));
    file.close();
    for (const char* off : {"Hidden=true\n", "X-GNOME-Autostart-enabled = false\n"}) {
        ASSERT_TRUE(file.open(QFile::Append));
        file.write(off);
        file.close();
        EXPECT_FALSE(item.isEnabled()) << off;
        EXPECT_TRUE(item.apply(true)) << off;
    }
    EXPECT_FALSE(item.apply(false));
    EXPECT_FALSE(QFile::exists(path));
    // A folder that cannot be made: the answer is what is so, not what was asked for.
    LoginItem impossible(QStringLiteral("/proc/none/autostart"), QStringLiteral("/bin/true"));
    EXPECT_FALSE(impossible.apply(true));
}

}  // namespace
}  // namespace vostel

#include "ServicesTests.moc"
