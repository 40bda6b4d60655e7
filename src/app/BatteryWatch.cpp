#include "app/BatteryWatch.h"

#include <QDBusMessage>
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
    bus.connect({}, path, properties, QStringLiteral("PropertiesChanged"), this,
                SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    auto* watcher =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &BatteryWatch::read);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { take(false); });
    read();
}

void BatteryWatch::read() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, properties, QStringLiteral("Get"));
    call.setArguments({service, key});
    auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        pending->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *pending;
        if (reply.isValid()) {
            take(reply.value().variant());
        }
    });
}

void BatteryWatch::propertiesChanged(const QString& interface, const QVariantMap& values,
                                     const QStringList& invalidated) {
    if (interface == service && values.contains(key)) {
        take(values.value(key));
    } else if (interface == service && invalidated.contains(key)) {
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
