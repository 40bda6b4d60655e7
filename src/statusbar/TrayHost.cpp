#include "statusbar/TrayHost.h"

#include <algorithm>
#include <array>

#include <QDBusMessage>
#include <QDBusVariant>
#include <QFile>

namespace vostel {

namespace {

constexpr int answerLimit = 100;  // ms

struct HostKind {
    // /proc/PID/comm, 15 characters at the most (proc(5)); "*" stands for any end.
    QStringView process;
    bool keepsWideImages;
    bool needsMenu;
};

// Hosts that differ from the rest. A host that is not listed counts as square, because a wide image
// squeezed into a square is worse than a square one in a wide bar, and as one that reports the
// right button, which most do.
constexpr std::array hostKinds = {
    HostKind{u"waybar", true, false},
    HostKind{u".waybar-wrapped", true, false},  // the same behind a distribution's wrapper
    HostKind{u"xfce4-panel", false, true},
    HostKind{u"panel-*", false, true},  // Xfce's panel runs its plugins as "panel-2-systray"
    HostKind{u"gnome-shell", false, true},
    HostKind{u"swaybar", false, true},
};

HostKind kindOf(const QString& process) {
    const auto* const kind =
        std::find_if(hostKinds.begin(), hostKinds.end(), [&](const HostKind& row) {
            return row.process.endsWith(u'*') ? process.startsWith(row.process.chopped(1))
                                              : process == row.process;
        });
    return kind != hostKinds.end() ? *kind : HostKind{};
}

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
    result.keepsWideImages = true;
    for (const QString& owner : owners) {
        const QString process = processName(bus, proc, owner);
        const HostKind kind = kindOf(process);
        result.processes.append(process);
        result.keepsWideImages = result.keepsWideImages && kind.keepsWideImages;
        result.needsMenu = result.needsMenu || kind.needsMenu;
    }
    return result;
}

}  // namespace vostel
