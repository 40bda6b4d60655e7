#include "core/SystemApp.h"

#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#include "core/Log.h"

namespace vostel::SystemApp {

namespace {

struct Monitor {
    const char* desktop;  // part of XDG_CURRENT_DESKTOP
    const char* program;
};

constexpr Monitor monitors[] = {
    {"KDE", "plasma-systemmonitor"},
    {"KDE", "ksysguard"},
    {"GNOME", "gnome-system-monitor"},
    {"GNOME", "resources"},
    {"GNOME", "gnome-usage"},
    {"Unity", "gnome-system-monitor"},
    {"Cinnamon", "gnome-system-monitor"},
    {"MATE", "mate-system-monitor"},
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

bool openActivityMonitor() {
    const QString desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    for (const bool ofThisDesktop : {true, false}) {
        for (const Monitor& monitor : monitors) {
            const bool matches =
                desktop.contains(QLatin1String(monitor.desktop), Qt::CaseInsensitive);
            if (matches == ofThisDesktop && launch(QLatin1String(monitor.program))) {
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

}  // namespace vostel::SystemApp
