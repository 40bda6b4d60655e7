#include "statusbar/TrayProbe.h"

#include "statusbar/SessionBus.h"

namespace vostel {

namespace {

TrayHost askTray(const TrayProbeOptions& options) {
    const QString address = options.busAddress.isEmpty() ? sessionBusAddress() : options.busAddress;
    if (address.isEmpty()) return {};
    const QDBusConnection bus = openBus(address);
    const TrayHost result = bus.isConnected() ? findTrayHost(bus, options.proc) : TrayHost();
    QDBusConnection::disconnectFromBus(bus.name());
    return result;
}

}  // namespace

TrayHost probeTray(const TrayProbeOptions& options, std::chrono::milliseconds limit) {
    return boundedly([options] { return askTray(options); }, limit).value_or(TrayHost());
}

void probeTray(const TrayProbeOptions& options, QObject* context,
               std::function<void(const TrayHost&)> answer) {
    inBackground(context, [options] { return askTray(options); }, std::move(answer));
}

}  // namespace vostel
