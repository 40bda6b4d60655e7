#include "statusbar/TrayBar.h"

#include <utility>

#include "platform/LogRing.h"
#include "statusbar/SessionBus.h"
#include "statusbar/TrayItem.h"

namespace vostel {

namespace {

constexpr std::chrono::milliseconds busLimit{1000};
// From a watcher's appearance to the first item: a host that reads the list of items when it starts
// may show it backwards, one that is told of each shows it in order.
constexpr std::chrono::milliseconds settleTime{400};

TrayBarOptions withAddress(TrayBarOptions options) {
    if (options.busAddress.isEmpty()) {
        options.busAddress = sessionBusAddress();
    }
    return options;
}

}  // namespace

std::unique_ptr<TrayBar> TrayBar::make(const TrayBarOptions& given, QString* error) {
    const TrayBarOptions options = withAddress(given);
    const auto bus =
        boundedly([address = options.busAddress] { return openBus(address); }, busLimit);
    return on(options, bus.value_or(QDBusConnection(QString())), error);
}

void TrayBar::make(const TrayBarOptions& given, QObject* context, Made done) {
    const TrayBarOptions options = withAddress(given);
    inBackground(
        context, [address = options.busAddress] { return openBus(address); },
        [options, done = std::move(done)](const QDBusConnection& bus) {
            QString error;
            auto bar = on(options, bus, &error);
            done(std::move(bar), error);
        });
}

std::unique_ptr<TrayBar> TrayBar::on(const TrayBarOptions& options, const QDBusConnection& bus,
                                     QString* error) {
    if (bus.isConnected()) {
        return std::unique_ptr<TrayBar>(new TrayBar(options, bus));
    }
    *error = options.busAddress.isEmpty()
                 ? QStringLiteral("This session has no D-Bus session bus.")
                 : QStringLiteral("The D-Bus session bus does not answer.");
    if (!bus.name().isEmpty()) {
        QDBusConnection::disconnectFromBus(bus.name());
    }
    return nullptr;
}

TrayBar::TrayBar(const TrayBarOptions& given, const QDBusConnection& connection)
    : options(given),
      link(options.busAddress, connection),
      shape(given.host.keepsWideImages ? ImageShape::Wide : ImageShape::Square),
      menuNeeded(given.host.needsMenu) {
    registerTrayTypes();
    watcherSettles.setSingleShot(true);
    watcherSettles.setInterval(settleTime);
    connect(&watcherSettles, &QTimer::timeout, this, [this] {
        watcherPresent = true;
        Q_EMIT watcherChanged();
    });
    connect(&link, &BusLink::lost, this, [this] {
        writeLogLine("The message bus is gone; the items return with it.");
        setWatcher(false);
    });
    connect(&link, &BusLink::opened, this, &TrayBar::attach);
    if (!options.appearance) {
        portal = std::make_unique<DesktopAppearance>(link);
        connect(portal.get(), &DesktopAppearance::changed, this, &TrayBar::imagesWanted);
    }
    attach();
}

TrayBar::~TrayBar() = default;

// What the bus has to tell this bar.
void TrayBar::attach() {
    QDBusConnection bus = link.bus();
    watcherWatch = std::make_unique<QDBusServiceWatcher>(trayWatcherService, bus,
                                                         QDBusServiceWatcher::WatchForOwnerChange);
    connect(watcherWatch.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                setWatcher(!owner.isEmpty());
            });
    hostWatch = std::make_unique<QDBusServiceWatcher>();
    hostWatch->setConnection(bus);
    hostWatch->setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    connect(hostWatch.get(), &QDBusServiceWatcher::serviceOwnerChanged, this, &TrayBar::findHost);
    for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        // Subscribed without a sender: to resolve a well-known name here would wait for the bus.
        bus.connect({}, trayWatcherPath, trayWatcherService, QString::fromLatin1(change), this,
                    SLOT(findHost()));
    }
    findHost();
}

std::unique_ptr<StatusItem> TrayBar::makeItem(const QString& autosaveName) {
    auto item = std::make_unique<TrayItem>(*this, options.busAddress, autosaveName);
    items.push_back(item.get());
    return item;
}

void TrayBar::remove(const TrayItem& item) {
    std::erase(items, &item);
    nextTurn();
}

void TrayBar::nextTurn() {
    if (!watcherPresent) return;
    for (TrayItem* item : items) {
        switch (item->turn()) {
            case TrayItem::Turn::None:
                break;
            case TrayItem::Turn::Here:
                item->registerItem();
                return;
            case TrayItem::Turn::Ahead:
            case TrayItem::Turn::Now:
                return;
        }
    }
}

std::vector<ImageContext> TrayBar::wantedImages() const {
    ImageContext context;
    context.appearance =  // Most panels are dark.
        portal ? portal->stated().value_or(Appearance::Dark) : *options.appearance;
    context.shape = shape;
    context.thickness = options.thickness;
    ImageContext doubled = context;
    doubled.scale = 2.0;
    return {context, doubled};
}

void TrayBar::setWatcher(bool present) {
    watcherPresent = false;
    Q_EMIT watcherChanged();
    if (present) {
        watcherSettles.start();
    } else {
        watcherSettles.stop();
    }
    findHost();
}

void TrayBar::findHost() {
    if (finding || !link.isOpen()) {
        findAgain = finding;
        return;
    }
    finding = true;
    inBackground(
        this,
        [connection = link.bus(), proc = options.proc] { return findTrayHost(connection, proc); },
        [this](const TrayHost& found) { takeHost(found); });
}

void TrayBar::takeHost(const TrayHost& found) {
    finding = false;
    if (!link.isOpen()) {
        return;
    }
    if (findAgain) {  // what was found is out of date
        findAgain = false;
        findHost();
        return;
    }
    hostWatch->setWatchedServices(found.names);
    if (found.watcher && !watcherPresent && !watcherSettles.isActive()) {
        watcherPresent = true;
        Q_EMIT watcherChanged();
    } else if (!found.watcher && !saidWaiting) {
        saidWaiting = true;
        writeLogLine("No tray is running: the items appear when one starts.");
    }
    if (!found.host) return;  // what was known stays until a host says otherwise
    if (found.needsMenu != menuNeeded) {
        menuNeeded = found.needsMenu;
        Q_EMIT needsMenuChanged();
    }
    const ImageShape wanted = found.keepsWideImages ? ImageShape::Wide : ImageShape::Square;
    if (wanted != shape) {
        shape = wanted;
        Q_EMIT imagesWanted();
    }
}

}  // namespace vostel
