#include "statusbar/SessionBus.h"

#include <atomic>

#include <QFileInfo>

namespace vostel {

QString sessionBusAddress() {
    const QString given = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!given.isEmpty()) return given;
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString socket = runtime + QStringLiteral("/bus");
    if (runtime.isEmpty() || !QFileInfo::exists(socket)) return {};
    return QStringLiteral("unix:path=") + socket;
}

QDBusConnection openBus(const QString& address) {
    static std::atomic<int> count = 0;
    return QDBusConnection::connectToBus(address, QStringLiteral("vostel-bus-%1").arg(++count));
}

}  // namespace vostel
