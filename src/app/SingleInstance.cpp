#include "app/SingleInstance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include "core/Log.h"

namespace vostel {

namespace {

const QString service = QStringLiteral("com.vostel.app");
const QString object = QStringLiteral("/com/vostel/app");
const QString interface = QStringLiteral("com.vostel.App");
constexpr int answerMilliseconds = 2000;
constexpr int relaunchMilliseconds = 60000;

constexpr int silenceMilliseconds = 1000;

// Request-name flags and answers of the D-Bus specification, "Message Bus Messages".
constexpr uint queued = 0;  // the name comes when a process that is just ending lets go of it
constexpr uint inQueue = 2;

QDBusMessage busCall(const QString& method, const QVariantList& arguments) {
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage call =
        QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus, method);
    call.setArguments(arguments);
    return call;
}

QDBusMessage ask(const QString& method, const QVariantList& arguments, int limit) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, object, interface, method);
    call.setArguments(arguments);
    return QDBusConnection::sessionBus().call(call, QDBus::Block, limit);
}

bool isAnswer(const QDBusMessage& message) {
    return message.type() == QDBusMessage::ReplyMessage && !message.arguments().isEmpty();
}

// Whether the descriptor is of the file at the path.
bool isOf(int descriptor, const QByteArray& path) {
    struct stat open{};
    struct stat there{};
    return fstat(descriptor, &open) == 0 && lstat(path.constData(), &there) == 0 &&
           open.st_dev == there.st_dev && open.st_ino == there.st_ino;
}

}  // namespace

SingleInstance::SingleInstance(const QString& folder, QObject* parent)
    : QObject(parent), path(folder + QStringLiteral("/vostel.lock")) {}

SingleInstance::~SingleInstance() {
    release();
}

bool SingleInstance::acquire(int inherited) {
    if (inherited >= 0) {
        descriptor = inherited;
        if (isOf(descriptor, QFile::encodeName(path)) &&
            flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
            return true;
        }
        release();
    }
    descriptor =
        open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        logLine(QStringLiteral("cannot make the lock %1: %2; a second start will not be noticed")
                    .arg(path, QString::fromLocal8Bit(std::strerror(errno))));
        return true;
    }
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        release();
        return false;
    }
    return true;
}

void SingleInstance::release() {
    if (descriptor >= 0) {
        close(descriptor);
        descriptor = -1;
    }
}

void SingleInstance::listen(const BusLink& bus) {
    if (!bus.isOpen()) {
        logLine(QStringLiteral(
            "no D-Bus session bus: no tray, and a second start does not reach this one"));
        return;
    }
    link = &bus;
    connect(link, &BusLink::opened, this, &SingleInstance::takeName);
    takeName();
}

// Without waiting: the bus may have come back, and gone again, while the program runs.
void SingleInstance::takeName() {
    QDBusConnection bus = link->bus();
    bus.registerObject(object, this, QDBusConnection::ExportScriptableSlots);
    auto* pending = new QDBusPendingCallWatcher(
        bus.asyncCall(busCall(QStringLiteral("RequestName"), {service, queued})), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [pending] {
        pending->deleteLater();
        const QDBusPendingReply<uint> reply = *pending;
        if (!reply.isValid() || reply.value() == inQueue) {
            logLine(QStringLiteral("the D-Bus name %1 is not to be had: a second start does not "
                                   "reach this one")
                        .arg(service));
        }
    });
}

void SingleInstance::fallSilent() {
    if (link != nullptr && link->isOpen()) {
        link->bus().call(busCall(QStringLiteral("ReleaseName"), {service}), QDBus::Block,
                         silenceMilliseconds);
    }
}

QString SingleInstance::ImportSettings(const QByteArray& bytes) {
    if (!takeSettings) {
        return QStringLiteral("Vostel is ending.");
    }
    setDelayedReply(true);
    takeSettings(bytes, [bus = connection(), call = message()](const QString& error) {
        bus.send(call.createReply(error));
    });
    return {};
}

bool SingleInstance::insist(std::chrono::milliseconds patience,
                            const std::function<bool()>& attempt) {
    QElapsedTimer waited;
    waited.start();
    while (!attempt()) {
        if (waited.hasExpired(patience.count()) || !QDBusConnection::sessionBus().isConnected()) {
            return false;
        }
        QThread::msleep(100);
    }
    return true;
}

std::optional<bool> SingleInstance::askToShowSettings() {
    const QDBusMessage answer = ask(QStringLiteral("ShowSettings"), {}, answerMilliseconds);
    // An earlier version, which does not say.
    const bool isSilent =
        answer.type() == QDBusMessage::ReplyMessage && answer.arguments().isEmpty();
    return isAnswer(answer) ? std::optional(answer.arguments().front().toBool())
           : isSilent       ? std::optional(true)
                            : std::nullopt;
}

std::optional<QByteArray> SingleInstance::askForSettings() {
    const QDBusMessage answer = ask(QStringLiteral("ExportSettings"), {}, answerMilliseconds);
    return isAnswer(answer) ? std::optional(answer.arguments().front().toByteArray())
                            : std::nullopt;
}

std::optional<QString> SingleInstance::askToImport(const QByteArray& bytes) {
    const QDBusMessage answer =
        ask(QStringLiteral("ImportSettings"), {bytes}, relaunchMilliseconds);
    return isAnswer(answer) ? std::optional(answer.arguments().front().toString()) : std::nullopt;
}

}  // namespace vostel
