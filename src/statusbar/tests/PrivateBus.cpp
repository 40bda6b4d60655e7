#include "PrivateBus.h"

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <QDBusConnectionInterface>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QEventLoop>
#include <QTimer>

#include "statusbar/SessionBus.h"
#include "statusbar/TrayHost.h"

using namespace vostel;

PrivateBus::PrivateBus() {
    // Its socket and its folder of services lie in a folder that goes with the object.
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert(QStringLiteral("XDG_RUNTIME_DIR"), folder.path());
    daemon.setProcessEnvironment(variables);
    daemon.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    start();
}

void PrivateBus::start() {
    QStringList arguments = {QStringLiteral("--session"), QStringLiteral("--nofork"),
                             QStringLiteral("--nopidfile"), QStringLiteral("--print-address")};
    arguments << QStringLiteral("--address=") +
                     (where.isEmpty() ? QStringLiteral("unix:dir=") + folder.path()
                                      : where.section(QStringLiteral(",guid="), 0, 0));
    daemon.start(QStringLiteral("dbus-daemon"), arguments);
    QString printed;
    while (!printed.endsWith(QLatin1Char('\n')) && daemon.waitForReadyRead(10000)) {
        printed += QString::fromLocal8Bit(daemon.readAllStandardOutput());
    }
    if (where.isEmpty()) {
        where = printed.trimmed();
    }
}

void PrivateBus::kill() {
    daemon.kill();
    daemon.waitForFinished();
}

PrivateBus::~PrivateBus() {
    kill();
}

void PrivateBus::freeze() {
    ::kill(static_cast<pid_t>(daemon.processId()), SIGSTOP);
}

void PrivateBus::thaw() {
    ::kill(static_cast<pid_t>(daemon.processId()), SIGCONT);
}

bool waitUntil(const std::function<bool()>& condition) {
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (condition()) {
            loop.quit();
        }
    });
    poll.start(2);
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    loop.exec();
    return condition();
}

FakeTray::FakeTray(const QString& address, bool hostName, bool answering) : bus(openBus(address)) {
    if (answering) {
        startAnswering();
    }
    if (hostName) {
        bus.registerService(QStringLiteral("org.kde.StatusNotifierHost-%1-1").arg(getpid()));
    }
    bus.registerService(trayWatcherService);
}

FakeTray::~FakeTray() {
    QDBusConnection::disconnectFromBus(bus.name());
}

void FakeTray::startAnswering() {
    bus.registerObject(trayWatcherPath, this,
                       QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
}

QDBusMessage FakeTray::call(const QString& interface, const QString& method,
                            const QVariantList& arguments, const QString& path) {
    QDBusMessage message = QDBusMessage::createMethodCall(items.value(0), path, interface, method);
    message.setArguments(arguments);
    QDBusPendingCall pending = bus.asyncCall(message);  // the item lives on this very thread
    waitUntil([&] { return pending.isFinished(); });
    return pending.reply();
}

QVariant FakeTray::property(const QString& name) {
    const QDBusMessage reply =
        call(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
             {QStringLiteral("org.kde.StatusNotifierItem"), name});
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

void FakeTray::countSignals() {
    for (const char* name : {"NewIcon", "NewTitle", "NewToolTip"}) {
        bus.connect({}, QStringLiteral("/StatusNotifierItem"),
                    QStringLiteral("org.kde.StatusNotifierItem"), QString::fromLatin1(name), this,
                    SLOT(noteSignal(QDBusMessage)));
    }
    bus.interface()->isServiceRegistered(trayWatcherService);  // the subscriptions have arrived
    sent.clear();
}

void FakeTray::noteSignal(const QDBusMessage& message) {
    sent.append(message.member());
}
