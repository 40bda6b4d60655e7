#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <utility>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QPointer>
#include <QString>
#include <QThreadPool>

namespace vostel {

// Where the session bus listens: $DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in
// $XDG_RUNTIME_DIR, if that folder is this user's alone. Empty when there is none; a bus is never
// started.
QString sessionBusAddress();

// Whether the bus at the address answers within the limit: false for one that is gone or hangs. The
// toolkit waits for such a bus, on the main thread, for longer than a user would. Only the answer
// to the first line of the protocol is waited for (D-Bus Specification, "Authentication Protocol").
// Addresses of other kinds than a socket of this machine are taken to answer.
bool busAnswers(const QString& address, std::chrono::milliseconds limit);

// To be called before the application object: keeps the bus that was found for it in the
// environment, and hides a bus from the toolkit that is not there (the
// D-Bus library would start one and leave it running) or does not answer within a second. Returns
// false for the latter.
bool prepareSessionBus();

// A private connection under a name of its own. It waits for the bus to answer, a second at the
// most, so it belongs on a worker thread. Not connected when that fails. A bus that hangs is never
// handed to the toolkit, whose one thread for all connections it would hold up.
QDBusConnection openBus(const QString& address);

// Runs work() on a worker thread, then done(result) on the application's thread, unless `context`
// is gone by then.
template <class Work, class Done>
void inBackground(QObject* context, Work work, Done done) {
    QThreadPool::globalInstance()->start(
        [context = QPointer<QObject>(context), work = std::move(work), done = std::move(done)] {
            auto result = work();
            QMetaObject::invokeMethod(qApp, [context, done, result = std::move(result)]() mutable {
                if (context) {
                    done(std::move(result));
                }
            });
        });
}

// Runs work() on a worker thread and waits for it, `limit` at the most; empty when it takes longer
// (it then ends by itself, its result is dropped). For the start of the program only.
template <class Work>
auto boundedly(Work work, std::chrono::milliseconds limit) -> std::optional<decltype(work())> {
    auto promise = std::make_shared<std::promise<decltype(work())>>();
    auto future = promise->get_future();
    QThreadPool::globalInstance()->start(
        [promise, work = std::move(work)] { promise->set_value(work()); });
    if (future.wait_for(limit) != std::future_status::ready) return {};
    return future.get();
}

}  // namespace vostel
