#include "statusbar/TrayHost.h"

#include <algorithm>
#include <array>

#include <QDBusMessage>
#include <QDBusVariant>
#include <QFile>

namespace vostel {

namespace {

constexpr int answerLimit = 100;  // ms

// /proc/PID/comm holds 15 characters at the most (proc(5)). Seen at work with a wide image.
constexpr std::array<const char16_t*, 2> wideHosts = {
    u"waybar",
    u".waybar-wrapped",  // the same program behind a distribution's wrapper
};

// The first value of the answer, or an invalid variant.
QVariant ask(const QDBusConnection& bus, QDBusMessage call, const QVariantList& arguments) {
    call.setArguments(arguments);
    call.setAutoStartService(false);
    const QDBusMessage reply = bus.call(call, QDBus::Block, answerLimit);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
    return reply.arguments().constFirst();
}

QVariant askBus(const QDBusConnection& bus, const QString& method, const QVariantList& arguments) {
    const QString service = QStringLiteral("org.freedesktop.DBus");
    return ask(bus,
               QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/DBus"),
                                              service, method),
               arguments);
}

bool watcherKnowsHost(const QDBusConnection& bus) {
    const QVariant answer =
        ask(bus,
            QDBusMessage::createMethodCall(trayWatcherService, trayWatcherPath,
                                           QStringLiteral("org.freedesktop.DBus.Properties"),
                                           QStringLiteral("Get")),
            {trayWatcherService, QStringLiteral("IsStatusNotifierHostRegistered")});
    return answer.value<QDBusVariant>().variant().toBool();
}

QString processName(const QDBusConnection& bus, const std::string& proc, const QString& name) {
    const QVariant pid = askBus(bus, QStringLiteral("GetConnectionUnixProcessID"), {name});
    if (pid.toUInt() == 0) return {};
    QFile file(QStringLiteral("%1/%2/comm").arg(QString::fromStdString(proc)).arg(pid.toUInt()));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.read(64)).trimmed();
}

}  // namespace

bool keepsWideImages(const QString& process) {
    return std::any_of(wideHosts.begin(), wideHosts.end(),
                       [&](const char16_t* host) { return process == QStringView(host); });
}

TrayHost findTrayHost(const QDBusConnection& bus, const std::string& proc) {
    TrayHost result;
    const QVariant names = askBus(bus, QStringLiteral("ListNames"), {});
    if (!names.isValid()) return result;
    result.bus = true;
    for (const QString& name : names.toStringList()) {
        if (name == trayWatcherService) {
            result.watcher = true;
        } else if (name.startsWith(QLatin1String("org.kde.StatusNotifierHost-"))) {
            result.names.append(name);
        }
    }
    if (!result.watcher) return result;
    // A host without a name of its own is the watcher itself (a desktop shell's extension).
    result.host = !result.names.isEmpty() || watcherKnowsHost(bus);
    if (!result.host) return result;
    const QStringList owners =
        result.names.isEmpty() ? QStringList(trayWatcherService) : result.names;
    for (const QString& owner : owners) {
        result.processes.append(processName(bus, proc, owner));
    }
    result.keepsWideImages =
        std::all_of(result.processes.begin(), result.processes.end(), vostel::keepsWideImages);
    return result;
}

}  // namespace vostel
