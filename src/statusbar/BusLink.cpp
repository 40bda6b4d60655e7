#include "statusbar/BusLink.h"

#include <algorithm>
#include <utility>

#include "statusbar/SessionBus.h"

namespace vostel {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds firstWait = 500ms;
constexpr std::chrono::milliseconds longestWait = 8s;

}  // namespace

BusLink::BusLink(const QString& where) : BusLink(where, QDBusConnection(QString())) {
    tryToOpen();
}

BusLink::BusLink(const QString& where, const QDBusConnection& own)
    : address(where), connection(own), wait(firstWait) {
    retry.setSingleShot(true);
    connect(&retry, &QTimer::timeout, this, &BusLink::tryToOpen);
    watch();
}

std::unique_ptr<BusLink> BusLink::toSessionBus() {
    auto link = std::make_unique<BusLink>(sessionBusAddress(), QDBusConnection::sessionBus());
    link->isOwn = false;
    return link;
}

BusLink::~BusLink() {
    drop();
}

void BusLink::watch() {
    if (connection.isConnected()) {
        // Sent by the D-Bus library itself (D-Bus Specification, "org.freedesktop.DBus.Local").
        connection.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                           QStringLiteral("org.freedesktop.DBus.Local"),
                           QStringLiteral("Disconnected"), this, SLOT(takeLoss()));
    }
    open = connection.isConnected();
}

void BusLink::takeLoss() {
    if (std::exchange(open, false)) {
        wait = firstWait;
        retry.start(wait);
        Q_EMIT lost();
    }
}

void BusLink::tryToOpen() {
    inBackground(
        this, [where = address] { return openBus(where); },
        [this](const QDBusConnection& next) { take(next); });
}

void BusLink::take(const QDBusConnection& next) {
    drop();
    connection = next;
    isOwn = true;
    watch();
    if (open) {
        Q_EMIT opened();
        return;
    }
    retry.start(wait);
    wait = std::min(2 * wait, longestWait);
    Q_EMIT failed();
}

void BusLink::drop() {
    if (isOwn && !connection.name().isEmpty()) {
        QDBusConnection::disconnectFromBus(connection.name());
    }
}

}  // namespace vostel
