#include "statusbar/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>

namespace vostel {

namespace {

QString service() {
    return QStringLiteral("org.freedesktop.portal.Desktop");
}
QString path() {
    return QStringLiteral("/org/freedesktop/portal/desktop");
}
QString settings() {
    return QStringLiteral("org.freedesktop.portal.Settings");
}
QString space() {
    return QStringLiteral("org.freedesktop.appearance");
}
QString key() {
    return QStringLiteral("color-scheme");
}

}  // namespace

DesktopAppearance::DesktopAppearance() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    // The arguments are matched by the bus, so that other settings wake nobody.
    bus.connect(service(), path(), settings(), QStringLiteral("SettingChanged"), {space(), key()},
                QString(), this, SLOT(settingChanged(QDBusMessage)));
    QDBusMessage call =
        QDBusMessage::createMethodCall(service(), path(), settings(), QStringLiteral("Read"));
    call << space() << key();
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid()) take(fromPortal(QVariant::fromValue(reply.value())));
        watcher->deleteLater();
    });
}

Appearance DesktopAppearance::current() const {
    if (portal) return *portal;
    const int lightness = QGuiApplication::palette().color(QPalette::Window).lightness();
    return lightness < 128 ? Appearance::Dark : Appearance::Light;
}

std::optional<Appearance> DesktopAppearance::fromPortal(QVariant value) {
    // "Read" wraps its answer twice; nobody wraps more often than a few times.
    for (int depth = 0; depth < 4 && value.canConvert<QDBusVariant>(); ++depth) {
        value = value.value<QDBusVariant>().variant();
    }
    bool isNumber = false;
    const uint number = value.toUInt(&isNumber);
    if (isNumber && number == 1) return Appearance::Dark;
    if (isNumber && number == 2) return Appearance::Light;
    return std::nullopt;
}

void DesktopAppearance::settingChanged(const QDBusMessage& message) {
    take(fromPortal(message.arguments().value(2)));  // after the name space and the key
}

void DesktopAppearance::take(std::optional<Appearance> next) {
    if (next == portal) return;
    portal = next;
    Q_EMIT changed();
}

}  // namespace vostel
