#pragma once

#include <string>

#include <QDBusConnection>
#include <QString>
#include <QStringList>

namespace vostel {

// What the session offers to a tray item.
struct TrayHost {
    bool bus = false;              // a session bus answers
    bool watcher = false;          // somebody keeps the list of items
    bool host = false;             // somebody shows them
    bool keepsWideImages = false;  // all who show them keep an image's aspect
    bool needsMenu = false;        // one of them never reports the right button by itself
    QStringList names;             // bus names of the hosts, to be watched
    QStringList processes;         // their process names
};

// Asks the bus who shows tray items. It waits for the answers (the bus and, only where no host has
// a name of its own, the watcher; 100 ms each at the most), so it belongs on a worker thread.
// `proc` is the root of /proc.
TrayHost findTrayHost(const QDBusConnection& bus, const std::string& proc);

inline const QString trayWatcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
inline const QString trayWatcherPath = QStringLiteral("/StatusNotifierWatcher");

}  // namespace vostel
