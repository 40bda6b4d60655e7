#include "core/SystemApp.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#include "core/Log.h"
#include "statusbar/SessionBus.h"

namespace vostel::SystemApp {

namespace {

// How a monitor is told which page to show: by what kind of page it has for a tab.
using PageOptions = QStringList (*)(MonitorTab tab);

bool isAboutProcesses(MonitorTab tab) {
    return tab == MonitorTab::CPU || tab == MonitorTab::Memory || tab == MonitorTab::Energy;
}

QStringList plasmaPage(MonitorTab tab) {
    return {QStringLiteral("--page-name"),
            isAboutProcesses(tab) ? QStringLiteral("Processes") : QStringLiteral("Overview")};
}

QStringList gnomePage(MonitorTab tab) {
    return {isAboutProcesses(tab)     ? QStringLiteral("--show-processes-tab")
            : tab == MonitorTab::Disk ? QStringLiteral("--show-file-systems-tab")
                                      : QStringLiteral("--show-resources-tab")};
}

struct Monitor {
    const char* desktop;  // part of XDG_CURRENT_DESKTOP
    const char* program;
    PageOptions pageOptions = nullptr;  // null: it shows what it showed last
};

constexpr Monitor monitors[] = {
    {"KDE", "plasma-systemmonitor", plasmaPage},
    {"KDE", "ksysguard"},
    {"GNOME", "gnome-system-monitor", gnomePage},
    {"GNOME", "resources"},
    {"GNOME", "gnome-usage"},
    {"Unity", "gnome-system-monitor", gnomePage},
    {"Cinnamon", "gnome-system-monitor", gnomePage},
    {"MATE", "mate-system-monitor", gnomePage},
    {"XFCE", "xfce4-taskmanager"},
    {"LXQt", "qps"},
    {"LXDE", "lxtask"},
    {"Pantheon", "io.elementary.monitor"},
    {"COSMIC", "missioncenter"},
};

constexpr const char* terminals[] = {
    "x-terminal-emulator", "konsole", "foot", "alacritty", "kitty", "wezterm", "xterm"};
constexpr const char* textMonitors[] = {"btop", "htop", "top"};

bool launch(const QString& program, const QStringList& arguments = {}) {
    const QString path = QStandardPaths::findExecutable(program);
    return !path.isEmpty() && QProcess::startDetached(path, arguments);
}

}  // namespace

bool openActivityMonitor(std::optional<MonitorTab> tab) {
    const QString desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    for (const bool ofThisDesktop : {true, false}) {
        for (const Monitor& monitor : monitors) {
            const bool matches =
                desktop.contains(QLatin1String(monitor.desktop), Qt::CaseInsensitive);
            const QStringList options =
                tab && monitor.pageOptions != nullptr ? monitor.pageOptions(*tab) : QStringList();
            if (matches == ofThisDesktop && launch(QLatin1String(monitor.program), options)) {
                return true;
            }
        }
    }
    for (const char* monitor : textMonitors) {
        const QString path = QStandardPaths::findExecutable(QLatin1String(monitor));
        for (const char* terminal : terminals) {
            if (!path.isEmpty() && launch(QLatin1String(terminal), {QStringLiteral("-e"), path})) {
                return true;
            }
        }
    }
    logLine(QStringLiteral("no system monitor found to open"));
    return false;
}

bool openURL(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.scheme().isEmpty() && QDesktopServices::openUrl(url);
}

void reveal(const QString& path) {
    const auto openFolder = [path] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).path()));
    };
    const auto ask = [path, openFolder](const QDBusConnection& bus) {
        if (!bus.isConnected()) {
            QDBusConnection::disconnectFromBus(bus.name());
            openFolder();
            return;
        }
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.FileManager1"),
            QStringLiteral("/org/freedesktop/FileManager1"),
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
        call.setArguments(
            {QStringList(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)), QString()});
        auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), qApp);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                         [watcher, openFolder, name = bus.name()] {
                             if (watcher->isError()) {
                                 openFolder();
                             }
                             watcher->deleteLater();
                             QDBusConnection::disconnectFromBus(name);
                         });
    };
    inBackground(
        qApp, [address = sessionBusAddress()] { return openBus(address); }, ask);
}

}  // namespace vostel::SystemApp
