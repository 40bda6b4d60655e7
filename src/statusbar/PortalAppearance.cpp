#include "statusbar/PortalAppearance.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

namespace vostel {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");
constexpr uint prefersLight = 2;  // 0: no preference, 1: dark

}  // namespace

PortalAppearance::PortalAppearance(QDBusConnection connection) : bus(std::move(connection)) {
    // Subscribed without a sender: to resolve a well-known name here would wait for the bus.
    bus.connect({}, path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto* watcher =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &PortalAppearance::read);
    read();
}

void PortalAppearance::read() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    call.setArguments({group, key});
    call.setAutoStartService(false);
    auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        pending->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *pending;
        if (reply.isValid()) {
            take(reply.value().variant());
        }
    });
}

void PortalAppearance::settingChanged(const QString& changedGroup, const QString& changedKey,
                                      const QDBusVariant& value) {
    if (changedGroup == group && changedKey == key) {
        take(value.variant());
    }
}

void PortalAppearance::take(const QVariant& value) {
    // Read() wraps its value in a second variant, SettingChanged does not.
    const QVariant inner =
        value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
    const Appearance stated = inner.toUInt() == prefersLight ? Appearance::Light : Appearance::Dark;
    if (stated != current) {
        current = stated;
        Q_EMIT changed();
    }
}

}  // namespace vostel
