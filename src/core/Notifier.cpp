#include "core/Notifier.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QVariantMap>

#include "statusbar/SessionBus.h"

namespace vostel::Notifier {

namespace {

constexpr qsizetype longestText = 1000;  // characters
constexpr int serverDecides = -1;        // how long it stands
const QString service = QStringLiteral("org.freedesktop.Notifications");

QDBusMessage callTo(const QString& method) {
    return QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/Notifications"),
                                          service, method);
}

// Desktop Notifications Specification 1.2, "Notify".
QDBusMessage notifyCall(const QString& title, const QString& body) {
    const QString desktopEntry = QGuiApplication::desktopFileName();
    const QVariantMap hints{{QStringLiteral("suppress-sound"), true},
                            {QStringLiteral("desktop-entry"), desktopEntry}};
    QDBusMessage call = callTo(QStringLiteral("Notify"));
    call.setArguments({QStringLiteral("Vostel"), 0U, desktopEntry, title, body, QStringList(),
                       hints, serverDecides});
    return call;
}

// Sends the call and does `then` with the answer, whatever it is.
template <typename Then>
void send(const QDBusConnection& bus, const QDBusMessage& call, Then then) {
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), qApp);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [watcher, then = std::move(then)] {
                         watcher->deleteLater();
                         then(QDBusPendingReply<QStringList>(*watcher));
                     });
}

void postOn(const QDBusConnection& bus, const QString& title, const QString& body) {
    if (!bus.isConnected()) {
        QDBusConnection::disconnectFromBus(bus.name());
        return;
    }
    // A server that knows markup takes every body for markup.
    send(bus, callTo(QStringLiteral("GetCapabilities")),
         [bus, title, body](const QDBusPendingReply<QStringList>& reply) {
             const bool markup =
                 reply.isValid() && reply.value().contains(QStringLiteral("body-markup"));
             send(bus, notifyCall(title, markup ? body.toHtmlEscaped() : body),
                  [name = bus.name()](const auto&) { QDBusConnection::disconnectFromBus(name); });
         });
}

}  // namespace

void post(const QString& title, const QString& body) {
    if (QGuiApplication::desktopFileName().isEmpty()) {
        return;
    }
    inBackground(
        qApp, [address = sessionBusAddress()] { return openBus(address); },
        [title = title.left(longestText),
         body = body.left(longestText)](const QDBusConnection& bus) { postOn(bus, title, body); });
}

}  // namespace vostel::Notifier
