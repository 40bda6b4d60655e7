#pragma once

#include <chrono>
#include <memory>

#include <QDBusConnection>
#include <QObject>
#include <QTimer>

namespace vostel {

// A connection to one message bus that comes back when the bus was restarted at the same address.
// Nothing of it waits on the main thread.
class BusLink : public QObject {
    Q_OBJECT

  public:
    // Opens a private connection; opened() follows.
    explicit BusLink(const QString& address);
    // Takes over a connection that openBus() made, open or not.
    BusLink(const QString& address, const QDBusConnection& own);
    // The process's shared connection to the session bus for as long as that lasts, then private
    // ones. Where there is no bus at the start none is looked for.
    static std::unique_ptr<BusLink> toSessionBus();
    ~BusLink() override;

    bool isOpen() const { return open; }
    // What is connected now, or was last.
    const QDBusConnection& bus() const { return connection; }

  Q_SIGNALS:
    // The bus is there (again): bus() is new, and nothing that the former one was told counts.
    void opened();
    // The bus is gone. Comes before the next opened().
    void lost();
    // An attempt failed; more follow, less and less often.
    void failed();

  private Q_SLOTS:
    void takeLoss();

  private:
    void watch();
    void tryToOpen();
    void take(const QDBusConnection& next);
    void drop();

    const QString address;
    QDBusConnection connection;
    bool isOwn = true;  // not the shared one
    bool open = false;
    std::chrono::milliseconds wait;
    QTimer retry;
};

}  // namespace vostel
