#pragma once

#include <functional>
#include <optional>

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

namespace vostel {

// Whether the machine runs on its battery, as the desktop's power service tells it. Nothing is
// polled; without the service the machine counts as plugged in.
class BatteryWatch : public QObject {
    Q_OBJECT

  public:
    // `bus` is the system's, or a test's. `changed` is called with each new state.
    BatteryWatch(const QDBusConnection& bus, std::function<void(bool onBattery)> changed);

    bool isOnBattery() const { return onBattery; }

  private Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& values,
                           const QStringList& invalidated);

  private:
    void read();
    void take(const QVariant& value);

    QDBusConnection bus;
    std::function<void(bool)> changed;
    bool onBattery = false;
};

}  // namespace vostel
