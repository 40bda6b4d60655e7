#pragma once

#include <functional>
#include <optional>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariant>

namespace vostel {

// Whether the machine runs on its battery, as the desktop's power service tells it: the owner of
// the bus name org.freedesktop.UPower, and nobody else. Nothing is polled; without the service the
// machine counts as plugged in.
class BatteryWatch : public QObject {
    Q_OBJECT

  public:
    // `bus` is the system's, or a test's. `changed` is called with each new state.
    BatteryWatch(const QDBusConnection& bus, std::function<void(bool onBattery)> changed);

    bool isOnBattery() const { return onBattery; }

  private Q_SLOTS:
    void propertiesChanged(const QDBusMessage& message);

  private:
    void ownerChanged(const QString& newOwner);
    void read();
    void take(const QVariant& value);

    QDBusConnection bus;
    std::function<void(bool)> changed;
    QString owner;  // unique bus name of the service; empty: not there, or not heard of yet
    bool onBattery = false;
};

}  // namespace vostel
