#pragma once

#include <functional>

#include <QDBusConnection>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

// A message bus of the test's own; it ends with the object.
class PrivateBus {
  public:
    PrivateBus();
    ~PrivateBus();
    const QString& address() const { return where; }
    // Stops it in its tracks: it answers nobody and closes no connection. Or lets it go on.
    void freeze();
    void thaw();
    // Kills it, and starts another one at the same address when start() is called.
    void kill();
    void start();

  private:
    QTemporaryDir folder;
    QProcess daemon;
    QString where;
};

// Runs the event loop until `condition` holds, 20 s at the most; says whether it does.
bool waitUntil(const std::function<bool()>& condition);

// The keeper of the list of items and at the same time their host, as a panel process has it.
class FakeTray : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hostRegistered)

  public:
    // With `hostName` the host has a bus name of its own, else the watcher is the host.
    FakeTray(const QString& address, bool hostName = true, bool answering = true);
    ~FakeTray() override;

    void startAnswering();
    bool hostRegistered() const { return true; }
    // Sends a call to the first item and waits for the answer.
    QDBusMessage call(const QString& interface, const QString& method,
                      const QVariantList& arguments = {},
                      const QString& path = QStringLiteral("/StatusNotifierItem"));
    QVariant property(const QString& name);
    // How often the items sent this signal since countSignals().
    void countSignals();
    int count(const QString& signal) const { return static_cast<int>(sent.count(signal)); }

    QDBusConnection bus;
    QStringList items;  // as registered, in order

  public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service) { items.append(service); }
    void noteSignal(const QDBusMessage& message);

  private:
    QStringList sent;
};
