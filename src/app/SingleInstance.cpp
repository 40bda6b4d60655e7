#include "app/SingleInstance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>

#include "core/Log.h"

namespace vostel {

namespace {

const QString service = QStringLiteral("com.vostel.app");
const QString object = QStringLiteral("/com/vostel/app");
const QString interface = QStringLiteral("com.vostel.App");
constexpr int answerMilliseconds = 2000;

}  // namespace

SingleInstance::SingleInstance(const QString& folder, QObject* parent)
    : QObject(parent), path(folder + QStringLiteral("/vostel.lock")) {}

SingleInstance::~SingleInstance() {
    release();
}

bool SingleInstance::acquire() {
    descriptor = open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
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

void SingleInstance::listen() {
    if (!QDBusConnection::sessionBus().isConnected()) {
        logLine(QStringLiteral(
            "no D-Bus session bus: no tray, and a second start does not reach this one"));
        return;
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.registerService(service)) {
        bus.registerObject(object, this, QDBusConnection::ExportScriptableSlots);
    }
}

bool SingleInstance::askToShowSettings() {
    const QDBusMessage call =
        QDBusMessage::createMethodCall(service, object, interface, QStringLiteral("ShowSettings"));
    const QDBusMessage answer =
        QDBusConnection::sessionBus().call(call, QDBus::Block, answerMilliseconds);
    return answer.type() == QDBusMessage::ReplyMessage;
}

}  // namespace vostel
