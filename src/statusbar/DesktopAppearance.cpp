#include "statusbar/DesktopAppearance.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>

namespace vostel {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");
constexpr uint prefersDark = 1;
constexpr uint prefersLight = 2;

}  // namespace

DesktopAppearance::DesktopAppearance(const BusLink& busLink) : link(busLink) {
    connect(&link, &BusLink::opened, this, &DesktopAppearance::attach);
    if (link.isOpen()) {
        attach();
    }
}

void DesktopAppearance::attach() {
    QDBusConnection bus = link.bus();
    // Subscribed without a sender: to resolve a well-known name here would wait for the bus. The
    // arguments are matched by the bus, so that other settings wake nobody.
    bus.connect({}, path, interface, QStringLiteral("SettingChanged"), {group, key}, QString(),
                this, SLOT(settingChanged(QDBusMessage)));
    watcher = std::make_unique<QDBusServiceWatcher>(service, bus,
                                                    QDBusServiceWatcher::WatchForRegistration);
    connect(watcher.get(), &QDBusServiceWatcher::serviceRegistered, this, &DesktopAppearance::read);
    read();
}

void DesktopAppearance::read() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    call.setArguments({group, key});
    call.setAutoStartService(false);
    auto* pending = new QDBusPendingCallWatcher(link.bus().asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        pending->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *pending;
        if (reply.isValid()) {
            take(fromPortal(QVariant::fromValue(reply.value())));
        }
    });
}

Appearance DesktopAppearance::orPalette() const {
    const int lightness = QGuiApplication::palette().color(QPalette::Window).lightness();
    return portal.value_or(lightness < 128 ? Appearance::Dark : Appearance::Light);
}

std::optional<Appearance> DesktopAppearance::fromPortal(QVariant value) {
    // "Read" wraps its answer twice; nobody wraps more often than a few times.
    for (int depth = 0; depth < 4 && value.canConvert<QDBusVariant>(); ++depth) {
        value = value.value<QDBusVariant>().variant();
    }
    switch (value.toUInt()) {
        case prefersDark:
            return Appearance::Dark;
        case prefersLight:
            return Appearance::Light;
        default:
            return std::nullopt;
    }
}

void DesktopAppearance::settingChanged(const QDBusMessage& message) {
    take(fromPortal(message.arguments().value(2)));  // after the name space and the key
}

void DesktopAppearance::take(std::optional<Appearance> next) {
    if (next != portal) {
        portal = next;
        Q_EMIT changed();
    }
}

}  // namespace vostel
