#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include "core/SystemApp.h"
#include "statusbar/tests/PrivateBus.h"

// A file manager as it is on a bus.
class FakeFileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

  public:
    explicit FakeFileManager(const QString& address)
        : bus(QDBusConnection::connectToBus(address, QStringLiteral("files"))) {
        bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), this,
                           QDBusConnection::ExportAllSlots);
        bus.registerService(QStringLiteral("org.freedesktop.FileManager1"));
    }
    ~FakeFileManager() override { QDBusConnection::disconnectFromBus(QStringLiteral("files")); }

    QStringList shown;

  public Q_SLOTS:
    void ShowItems(const QStringList& addresses, const QString&) { shown += addresses; }

  private:
    QDBusConnection bus;
};

// What the desktop is asked to open.
class FolderOpener : public QObject {
    Q_OBJECT

  public:
    FolderOpener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~FolderOpener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QStringList opened;

  public Q_SLOTS:
    void open(const QUrl& url) { opened << url.toLocalFile(); }
};

namespace vostel {
namespace {

using SystemApp::MonitorTab;

// Programs of the test's own on PATH; each writes down how it was started.
class ActivityMonitorTest : public testing::Test {
  protected:
    ActivityMonitorTest() : path(qgetenv("PATH")) {}
    ~ActivityMonitorTest() override {
        qputenv("PATH", path);
        qunsetenv("XDG_CURRENT_DESKTOP");
    }

    QString started(const QStringList& installed, const char* desktop,
                    std::optional<MonitorTab> tab) {
        const QTemporaryDir folder;
        for (const QString& name : installed) {
            QFile file(folder.filePath(name));
            EXPECT_TRUE(file.open(QFile::WriteOnly));
            file.write(
                "#!/bin/sh\necho \"${0##*/} $*\" >\"${0%/*}/new\"\n"
                "/bin/mv \"${0%/*}/new\" \"${0%/*}/started\"\n");
            file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        }
        qputenv("PATH", folder.path().toUtf8());
        qputenv("XDG_CURRENT_DESKTOP", desktop);
        QFile result(folder.filePath(QStringLiteral("started")));
        monitorName = SystemApp::activityMonitorName();
        if (!SystemApp::openActivityMonitor(tab)) {
            return QStringLiteral("none");
        }
        EXPECT_TRUE(waitUntil([&] { return result.exists(); }));
        EXPECT_TRUE(result.open(QFile::ReadOnly));
        return QString::fromUtf8(result.readAll())
            .replace(folder.path(), QStringLiteral("DIR"))
            .trimmed();
    }

    QString monitorName;  // of the one that was started last

  private:
    QByteArray path;
};

TEST_F(ActivityMonitorTest, comesUpWithTheWantedPage) {
    const QString plasma = QStringLiteral("plasma-systemmonitor");
    const QString gnome = QStringLiteral("gnome-system-monitor");
    const QString mate = QStringLiteral("mate-system-monitor");
    const QString xfce = QStringLiteral("xfce4-taskmanager");
    const QString xterm = QStringLiteral("xterm");
    const QString htop = QStringLiteral("htop");
    const struct {
        QStringList installed;
        const char* desktop;
        std::optional<MonitorTab> tab;
        const char* started;
        const char* name;
    } rows[] = {
        {{plasma, gnome},
         "KDE",
         MonitorTab::CPU,
         "plasma-systemmonitor --page-name Processes",
         "System Monitor"},
        {{plasma, gnome},
         "KDE",
         MonitorTab::Network,
         "plasma-systemmonitor --page-name Overview",
         "System Monitor"},
        {{plasma, gnome},
         "ubuntu:GNOME",
         MonitorTab::Memory,
         "gnome-system-monitor --show-processes-tab",
         "System Monitor"},
        {{gnome},
         "GNOME",
         MonitorTab::Network,
         "gnome-system-monitor --show-resources-tab",
         "System Monitor"},
        {{gnome},
         "GNOME",
         MonitorTab::Disk,
         "gnome-system-monitor --show-file-systems-tab",
         "System Monitor"},
        {{gnome}, "GNOME", std::nullopt, "gnome-system-monitor", "System Monitor"},
        {{mate},
         "",
         MonitorTab::Energy,
         "mate-system-monitor --show-processes-tab",
         "System Monitor"},
        {{xfce, gnome}, "XFCE", MonitorTab::CPU, "xfce4-taskmanager", "Task Manager"},
        {{xterm, htop}, "KDE", MonitorTab::CPU, "xterm -e DIR/htop", "htop"},
        {{htop}, "KDE", MonitorTab::CPU, "none", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(started(row.installed, row.desktop, row.tab), QLatin1String(row.started))
            << row.desktop;
        EXPECT_EQ(monitorName, QLatin1String(row.name)) << row.started;
    }
}

TEST(RevealTest, showsTheFileOrElseItsFolder) {
    const PrivateBus bus;
    FolderOpener desktop;
    const QString path = QStringLiteral("/opt/my apps/100%/Vostel #1");
    qsizetype opened = 0;
    for (const QByteArray& address : {QByteArray("disabled:"), QByteArray("unix:path=/no/bus"),
                                      bus.address().toUtf8() /* without a file manager */}) {
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        SystemApp::reveal(path);
        EXPECT_TRUE(waitUntil([&] { return desktop.opened.size() > opened; }));
        EXPECT_EQ(desktop.opened.value(opened++), QStringLiteral("/opt/my apps/100%"));
    }
    FakeFileManager manager(bus.address());
    SystemApp::reveal(path);
    EXPECT_TRUE(waitUntil([&] { return !manager.shown.isEmpty(); }));
    EXPECT_EQ(QUrl(manager.shown.value(0)).toLocalFile(), path);
    EXPECT_EQ(desktop.opened.size(), opened);
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

}  // namespace
}  // namespace vostel

#include "SystemAppTests.moc"
