#include "statusbar/SessionBus.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include "platform/PrivateFolder.h"

namespace vostel {

namespace {

constexpr std::chrono::milliseconds answerLimit{1000};

// The socket that the first entry of a bus address names; empty for other kinds. An abstract one
// begins with a zero byte.
QByteArray socketOf(const QString& address) {
    const QString first = address.section(u';', 0, 0);
    if (!first.startsWith(QStringLiteral("unix:"))) {
        return {};
    }
    for (const QString& each : first.mid(5).split(u',')) {
        const QByteArray value = QByteArray::fromPercentEncoding(each.section(u'=', 1).toUtf8());
        if (each.startsWith(QStringLiteral("path="))) {
            return value;
        }
        if (each.startsWith(QStringLiteral("abstract="))) {
            return '\0' + value;
        }
    }
    return {};
}

// A bus that was restarted at the same place has another identity (D-Bus Specification, "Server
// Addresses"), and the D-Bus library does not connect to one that it was not told of.
QString withoutIdentity(QString address) {
    return address.remove(QRegularExpression(QStringLiteral(",?guid=[0-9a-fA-F]*")));
}

}  // namespace

bool busAnswers(const QString& address, std::chrono::milliseconds limit) {
    const QByteArray path = socketOf(address);
    sockaddr_un place{};
    if (path.isEmpty() || static_cast<std::size_t>(path.size()) >= sizeof place.sun_path) {
        return true;
    }
    place.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), place.sun_path);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) +
                                             static_cast<std::size_t>(path.size()));
    const int bus = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const QByteArray hello =
        QByteArray(1, '\0') + "AUTH EXTERNAL " + QByteArray::number(getuid()).toHex() + "\r\n";
    pollfd answer{bus, POLLIN, 0};
    char byte = 0;
    const bool answers =
        bus >= 0 && connect(bus, reinterpret_cast<const sockaddr*>(&place), size) == 0 &&
        send(bus, hello.constData(), static_cast<std::size_t>(hello.size()), MSG_NOSIGNAL) ==
            hello.size() &&
        poll(&answer, 1, static_cast<int>(limit.count())) == 1 && recv(bus, &byte, 1, 0) == 1;
    if (bus >= 0) {
        close(bus);
    }
    return answers;
}

QString sessionBusAddress() {
    const QString given = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!given.isEmpty()) return given;
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString socket = runtime + QStringLiteral("/bus");
    if (!isPrivateFolder(QFile::encodeName(runtime).toStdString()) || !QFileInfo::exists(socket)) {
        return {};
    }
    return QStringLiteral("unix:path=") + socket;
}

bool prepareSessionBus() {
    const QString address = sessionBusAddress();
    const bool hangs = !address.isEmpty() && !busAnswers(address, answerLimit);
    const bool isUsable = !address.isEmpty() && !hangs;
    qputenv("DBUS_SESSION_BUS_ADDRESS",
            isUsable ? withoutIdentity(address).toLocal8Bit() : QByteArray("disabled:"));
    return !hangs;
}

QDBusConnection openBus(const QString& given) {
    const QString address = withoutIdentity(given);
    static std::atomic<int> count = 0;
    if (!busAnswers(address, answerLimit)) {
        return QDBusConnection(QString());
    }
    return QDBusConnection::connectToBus(address, QStringLiteral("vostel-bus-%1").arg(++count));
}

}  // namespace vostel
