#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDir>
#include <QFile>
#include <QProcess>
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
        bus.send(signal(battery));
    }
    static QDBusMessage signal(bool battery) {
        QDBusMessage message =
            QDBusMessage::createSignal(path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                       QStringLiteral("PropertiesChanged"));
        message.setArguments({QStringLiteral("org.freedesktop.UPower"),
                              QVariantMap{{QStringLiteral("OnBattery"), battery}}, QStringList()});
        return message;
    }

  private:
    inline static const QString path = QStringLiteral("/org/freedesktop/UPower");
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

// Everybody on the bus may send such a signal, from the right path, or wait in line for the name.
TEST(BatteryWatchTest, believesNobodyButTheOwnerOfTheName) {
    const PrivateBus bus;
    const QString name = QStringLiteral("org.freedesktop.UPower");
    auto own = QDBusConnection::connectToBus(bus.address(), QStringLiteral("watch"));
    auto impostor = QDBusConnection::connectToBus(bus.address(), QStringLiteral("impostor"));
    BatteryWatch watch(own, [](bool) {});
    // Whether the watch takes the opposite of its state from the impostor.
    const auto isDeceived = [&] {
        const bool before = watch.isOnBattery();
        impostor.send(FakeUPower::signal(!before));
        impostor.interface()->isServiceRegistered(name);  // the bus has passed the signal on
        const QDBusPendingCall after = own.interface()->asyncCall(QStringLiteral("GetId"));
        EXPECT_TRUE(waitUntil([&] { return after.isFinished(); }));
        return watch.isOnBattery() != before;
    };
    EXPECT_FALSE(isDeceived()) << "nobody owns the name";
    auto power = std::make_unique<FakeUPower>(bus.address(), true);
    EXPECT_TRUE(waitUntil([&] { return watch.isOnBattery(); }));
    EXPECT_FALSE(isDeceived());
    impostor.interface()->registerService(name, QDBusConnectionInterface::QueueService);
    EXPECT_FALSE(isDeceived()) << "in line for the name is not its owner";
    power->set(false);
    EXPECT_TRUE(waitUntil([&] { return !watch.isOnBattery(); }));
    EXPECT_FALSE(isDeceived());
    power.reset();  // the next in line gets the name
    EXPECT_TRUE(waitUntil([&] {
        return impostor.interface()->serviceOwner(name).value() == impostor.baseService();
    }));
    EXPECT_TRUE(isDeceived()) << "a new owner is not heard";
    QDBusConnection::disconnectFromBus(QStringLiteral("impostor"));
    QDBusConnection::disconnectFromBus(QStringLiteral("watch"));
}

TEST(LoginItemTest, isEnabledAsTheEntrySays) {
    const QTemporaryDir home;
    const QString folder = home.filePath(QStringLiteral("a/autostart"));
    const QString path = folder + QStringLiteral("/com.vostel.app.desktop");
    LoginItem item(folder, QStringLiteral("/opt/my apps/\"$HOME\"/Vostel-x86_64.AppImage"));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(item.apply(false));
    EXPECT_TRUE(item.apply(true));
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_TRUE(file.readAll().contains(
        "\nExec=\"/opt/my apps/\\\\\"\\\\$HOME\\\\\"/Vostel-x86_64.AppImage\"\n"));
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

// The entry as a desktop reads it: its program really starts, whatever its path. Catches a quoting
// rule that is missed, and a path that an autostart can never start.
TEST(LoginItemTest, theEntryStartsTheProgramWhateverItsPath) {
    const QTemporaryDir home;
    for (const char* name : {"vostel", "Vostel-1.0 (x86_64).AppImage", "100% mine", "%f", "a=b %U",
                             "\"quoted\"", "it's", "$HOME `id`", "back\\slash\\\\n", "tab\there",
                             "line\nbreak", "Größe ⌘", "; &|"}) {
        const QString folder = home.filePath(QStringLiteral("build/") + QString::fromUtf8(name));
        ASSERT_TRUE(QDir().mkpath(folder));
        const QString program = folder + u'/' + QString::fromUtf8(name);
        QFile file(program);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(
            "#!/bin/sh\nprintf %s \"$#$0\" >\"${0%/*}/new\"\nmv \"${0%/*}/new\" "
            "\"${0%/*}/started\"\n");
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);

        ASSERT_TRUE(LoginItem(home.path(), program).apply(true));
        QProcess desktop;
        desktop.start(
            QStringLiteral("gio"),
            {QStringLiteral("launch"), home.filePath(QStringLiteral("com.vostel.app.desktop"))});
        ASSERT_TRUE(desktop.waitForFinished());
        EXPECT_EQ(desktop.exitCode(), 0) << desktop.readAllStandardError().constData();
        QFile started(folder + QStringLiteral("/started"));
        ASSERT_TRUE(waitUntil([&] { return started.exists(); })) << name;
        ASSERT_TRUE(started.open(QFile::ReadOnly));
        EXPECT_EQ(QString::fromUtf8(started.readAll()), u'0' + program);
        EXPECT_EQ(programOfExec(execLine(program)), program);
        LoginItem(home.path(), program).apply(false);
    }
}

// Catches an entry that starts nothing at the next login, and one of another copy, of another
// program or of a user who switched it off that is overwritten.
TEST(LoginItemTest, anEntryWhoseProgramIsGoneIsRepaired) {
    const QTemporaryDir home;
    const QString path = home.filePath(QStringLiteral("com.vostel.app.desktop"));
    const QByteArray other = QCoreApplication::applicationFilePath().toUtf8();
    const struct {
        const char* what;
        QByteArray entry;
        bool repaired;
    } rows[] = {
        {"moved", "[Desktop Entry]\nExec=\"/gone/my vostel\"\n", true},
        {"moved, as others write it", "[Desktop Entry]\nExec = /gone/vostel --bar=dock %U\n", true},
        {"moved, a path with a percent sign", "[Desktop Entry]\nExec=nice -n 0 \"/g/1%%\"\n", true},
        {"another copy", "[Desktop Entry]\nExec=\"" + other + "\"\n", false},
        {"another copy with options", "[Desktop Entry]\nExec=" + other + " --bar=dock\n", false},
        {"found on PATH", "[Desktop Entry]\nExec=vostel\n", false},
        {"switched off", "[Desktop Entry]\nExec=/gone/vostel\nHidden=true\n", false},
        {"switched off by a desktop",
         "[Desktop Entry]\nX-GNOME-Autostart-enabled=false\nExec=/gone/vostel\n", false},
        {"no entry", "", false},
        {"an action's line only", "[Desktop Entry]\n[Desktop Action x]\nExec=/gone/v\n", false},
    };
    const LoginItem item(home.path(), QStringLiteral("/opt/new/vostel"));
    item.repair();
    EXPECT_FALSE(QFile::exists(path)) << "an item that is off stays off";
    for (const auto& row : rows) {
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::WriteOnly | QFile::Truncate));
        file.write(row.entry);
        file.close();
        item.repair();
        ASSERT_TRUE(file.open(QFile::ReadOnly));
        const QByteArray after = file.readAll();
        EXPECT_EQ(after.contains("\nExec=\"/opt/new/vostel\"\n"), row.repaired) << row.what;
        EXPECT_EQ(after == row.entry, !row.repaired) << row.what;
    }
}

// Only the entry's own group says that it is off, and a failure is named on the log.
TEST(LoginItemTest, whatIsOffAndWhatFails) {
    const QTemporaryDir home;
    QFile file(home.filePath(QStringLiteral("com.vostel.app.desktop")));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("[Desktop Entry]\nExec=/bin/true\n[Desktop Action x]\nHidden=true\n");
    file.close();
    EXPECT_TRUE(LoginItem(home.path(), QStringLiteral("/bin/true")).isEnabled());
    testing::internal::CaptureStderr();
    LoginItem(QStringLiteral("/proc/none/autostart"), QStringLiteral("/bin/true")).apply(true);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("vostel: Launch at Login change failed: "), std::string::npos) << log;
}

}  // namespace
}  // namespace vostel

#include "ServicesTests.moc"
