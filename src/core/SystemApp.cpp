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
    const char* name;                   // as its desktop entry gives it
    PageOptions pageOptions = nullptr;  // null: it shows what it showed last
};

constexpr Monitor monitors[] = {
    {"KDE", "plasma-systemmonitor", "System Monitor", plasmaPage},
    {"KDE", "ksysguard", "System Monitor"},
    {"GNOME", "gnome-system-monitor", "System Monitor", gnomePage},
    {"GNOME", "resources", "Resources"},
    {"GNOME", "gnome-usage", "Usage"},
    {"Unity", "gnome-system-monitor", "System Monitor", gnomePage},
    {"Cinnamon", "gnome-system-monitor", "System Monitor", gnomePage},
    {"MATE", "mate-system-monitor", "System Monitor", gnomePage},
    {"XFCE", "xfce4-taskmanager", "Task Manager"},
    {"LXQt", "qps", "qps"},
    {"LXDE", "lxtask", "Task Manager"},
    {"Pantheon", "io.elementary.monitor", "Monitor"},
    {"COSMIC", "missioncenter", "Mission Center"},
};

constexpr const char* terminals[] = {
    "x-terminal-emulator", "konsole", "foot", "alacritty", "kitty", "wezterm", "xterm"};
constexpr const char* textMonitors[] = {"btop", "htop", "top"};

// A monitor that is installed, and the command that opens it.
struct Installed {
    QString name;
    QString program;  // a full path
    QStringList arguments;
};

QString pathOf(const char* program) {
    return QStandardPaths::findExecutable(QLatin1String(program));
}

std::optional<Installed> windowMonitor(std::optional<MonitorTab> tab) {
    const QString desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    for (const bool ofThisDesktop : {true, false}) {
        for (const Monitor& monitor : monitors) {
            const bool matches =
                desktop.contains(QLatin1String(monitor.desktop), Qt::CaseInsensitive);
            const QString path = matches == ofThisDesktop ? pathOf(monitor.program) : QString();
            if (!path.isEmpty()) {
                return Installed{QLatin1String(monitor.name), path,
                                 tab && monitor.pageOptions != nullptr ? monitor.pageOptions(*tab)
                                                                       : QStringList()};
            }
        }
    }
    return std::nullopt;
}

std::optional<Installed> textMonitor() {
    for (const char* monitor : textMonitors) {
        const QString path = pathOf(monitor);
        for (const char* terminal : terminals) {
            const QString window = path.isEmpty() ? QString() : pathOf(terminal);
            if (!window.isEmpty()) {
                return Installed{QLatin1String(monitor), window, {QStringLiteral("-e"), path}};
            }
        }
    }
    return std::nullopt;
}

std::optional<Installed> installedMonitor(std::optional<MonitorTab> tab) {
    const std::optional<Installed> monitor = windowMonitor(tab);
    return monitor ? monitor : textMonitor();
}

}  // namespace

QString activityMonitorName() {
    const std::optional<Installed> monitor = installedMonitor(std::nullopt);
    return monitor ? monitor->name : QString();
}

bool openActivityMonitor(std::optional<MonitorTab> tab) {
    const std::optional<Installed> monitor = installedMonitor(tab);
    if (monitor && QProcess::startDetached(monitor->program, monitor->arguments)) {
        return true;
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
    inBackground(qApp, [address = sessionBusAddress()] { return openBus(address); }, ask);
}

}  // namespace vostel::SystemApp
