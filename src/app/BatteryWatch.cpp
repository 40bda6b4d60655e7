#include "app/BatteryWatch.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

namespace vostel {

namespace {

const QString service = QStringLiteral("org.freedesktop.UPower");
const QString path = QStringLiteral("/org/freedesktop/UPower");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString key = QStringLiteral("OnBattery");

}  // namespace

BatteryWatch::BatteryWatch(const QDBusConnection& connection, std::function<void(bool)> call)
    : bus(connection), changed(std::move(call)) {
    // Subscribed without a sender: to resolve a well-known name here would wait for the bus. Who
    // sent a signal is looked at when it comes.
    bus.connect({}, path, properties, QStringLiteral("PropertiesChanged"), {service}, QString(),
                this, SLOT(propertiesChanged(QDBusMessage)));
    auto* watcher =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& next) { ownerChanged(next); });
    read();
}

void BatteryWatch::ownerChanged(const QString& newOwner) {
    owner = newOwner;
    if (owner.isEmpty()) {
        take(false);
    } else {
        read();
    }
}

void BatteryWatch::read() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, properties, QStringLiteral("Get"));
    call.setArguments({service, key});
    auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        pending->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *pending;
        // The bus hands a call on to the name's owner: whoever answers is that. An answer of the
        // owner before this one comes too late.
        const QString sender = reply.reply().service();
        if (reply.isValid() && (owner.isEmpty() || owner == sender)) {
            owner = sender;
            take(reply.value().variant());
        }
    });
}

void BatteryWatch::propertiesChanged(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    if (owner.isEmpty() || message.service() != owner || arguments.size() != 3) {
        return;
    }
    const auto values = qdbus_cast<QVariantMap>(arguments[1]);
    if (values.contains(key)) {
        take(values.value(key));
    } else if (arguments[2].toStringList().contains(key)) {
        read();
    }
}

void BatteryWatch::take(const QVariant& value) {
    if (value.toBool() != onBattery) {
        onBattery = value.toBool();
        changed(onBattery);
    }
}

}  // namespace vostel
