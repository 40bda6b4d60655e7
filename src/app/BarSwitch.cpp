#include "app/BarSwitch.h"

#include <unistd.h>

#include <chrono>
#include <utility>

#include <QFile>
#include <QTimer>

#include "core/Log.h"
#include "platform/LineOutput.h"
#include "statusbar/DockBar.h"
#include "statusbar/OffscreenBar.h"

namespace vostel {

namespace {

using namespace std::chrono_literals;

constexpr auto hostSettles = 2s;

std::unique_ptr<OffscreenBar> makeOffscreenBar(const CommandLine& commandLine,
                                               ItemOrderStore& order) {
    OffscreenBarOptions options;
    options.imagePath = commandLine.imagePath.isEmpty()
                            ? runtimeFolder() + QStringLiteral("/vostel-bar.png")
                            : commandLine.imagePath;
    options.text = STDOUT_FILENO;
    writeLine(options.text,
              "The bar is drawn into " + QFile::encodeName(options.imagePath).toStdString());
    return std::make_unique<OffscreenBar>(order, options);
}

}  // namespace

BarSwitch::BarSwitch(const CommandLine& asked, Display foundDisplay, AppServices& appServices,
                     ItemOrderStore& orderStore, const BusLink& sessionBus)
    : commandLine(asked),
      display(foundDisplay),
      services(appServices),
      order(orderStore),
      session(sessionBus),
      storedKind(services.app.bar()) {
    open();
    connect(&session, &BusLink::opened, this, &BarSwitch::watchForTray);
    watchForTray();
    subscription = services.notifications.subscribe(AppSettings::changeNotification,
                                                    [this] { settingsChanged(); });
}

BarSwitch::~BarSwitch() = default;

std::unique_ptr<StatusItem> BarSwitch::makeItem(const QString& autosaveName) {
    return bar->makeItem(autosaveName);
}

double BarSwitch::thickness() const {
    return bar->thickness();
}

BarKind BarSwitch::wanted() const {
    return commandLine.bar.value_or(barKindFromText(storedKind).value_or(BarKind::Automatic));
}

// At the start of a session this program may come before the panel: with the automatic choice a
// tray that keeps wide images takes over from the dock bar when it appears.
void BarSwitch::watchForTray() {
    if (display == Display::None || !session.isOpen()) {
        return;
    }
    trayWatch = std::make_unique<QDBusServiceWatcher>(trayWatcherService, session.bus(),
                                                      QDBusServiceWatcher::WatchForRegistration);
    connect(trayWatch.get(), &QDBusServiceWatcher::serviceRegistered, this, [this] {
        // Hosts report to the watcher a moment after it appeared.
        QTimer::singleShot(hostSettles, this, [this] {
            if (shown == BarKind::Dock && wanted() == BarKind::Automatic) {
                replace(BarKind::Automatic);
            }
        });
    });
}

bool BarSwitch::asksForTray(BarKind wanted) const {
    return display != Display::None && wanted != BarKind::Offscreen &&
           !(wanted == BarKind::Dock && display == Display::X11);
}

BarKind BarSwitch::choose(BarKind wanted, const TrayHost& host) const {
    QString complaint;
    const BarKind kind = chooseBar(wanted, {display, host.host, host.keepsWideImages}, &complaint);
    if (!complaint.isEmpty()) {
        logLine(QStringLiteral("%1; using the %2 bar").arg(complaint, textOf(kind)));
    }
    return kind;
}

// The bar of the start, which waits for the bus, for a limited time.
void BarSwitch::open() {
    TrayBarOptions options;
    if (asksForTray(wanted())) {
        options.host = probeTray(probeOptions());
    }
    BarKind kind = choose(wanted(), options.host);
    std::unique_ptr<TrayBar> first;
    if (kind == BarKind::Tray) {
        QString error;
        first = TrayBar::make(options, &error);
        if (!first) {
            logLine(error);
        }
    }
    shown = possible(kind, first != nullptr);
    put(std::move(first));
}

// What there is in place of a tray that could not be made, or of a dock bar without an X server.
BarKind BarSwitch::possible(BarKind kind, bool hasTray) {
    if (kind == BarKind::Tray && !hasTray) {
        kind = BarKind::Dock;
    }
    return kind == BarKind::Dock && !DockBar::isAvailable() ? BarKind::Offscreen : kind;
}

// Opens the kind that is to be shown.
void BarSwitch::put(std::unique_ptr<TrayBar> tray) {
    if (shown == BarKind::Tray) {
        bar = std::move(tray);
    } else if (shown == BarKind::Dock) {
        bar = std::make_unique<DockBar>(order, services.app.dockBarOptions());
    } else {
        auto offscreen = makeOffscreenBar(commandLine, order);
        connect(offscreen.get(), &OffscreenBar::readerGone, this, &BarSwitch::readerGone);
        bar = std::move(offscreen);
    }
}

void BarSwitch::exchange(BarKind kind, std::unique_ptr<TrayBar> tray) {
    const BarKind next = possible(kind, tray != nullptr);
    if (next == shown) {
        return;
    }
    if (willSwitch) {
        willSwitch();
    }
    bar.reset();
    shown = next;
    put(std::move(tray));
    if (didSwitch) {
        didSwitch();
    }
    services.notifications.post(AppSettings::changeNotification);
}

void BarSwitch::settingsChanged() {
    if (auto* dock = dynamic_cast<DockBar*>(bar.get())) {
        dock->setOptions(services.app.dockBarOptions());
    }
    if (services.app.bar() == storedKind) {
        return;
    }
    storedKind = services.app.bar();
    // Queued: items end with their bar, and one of them may be who changed the setting.
    QMetaObject::invokeMethod(
        this, [this] { replace(barKindFromText(storedKind).value_or(BarKind::Automatic)); },
        Qt::QueuedConnection);
}

void BarSwitch::replace(BarKind wanted) {
    const int change = ++changes;
    if (!asksForTray(wanted)) {
        exchange(choose(wanted, {}), TrayHost());
        return;
    }
    probeTray(probeOptions(), this, [this, wanted, change](const TrayHost& host) {
        if (change == changes) {
            exchange(choose(wanted, host), host);
        }
    });
}

void BarSwitch::exchange(BarKind kind, const TrayHost& host) {
    if (kind == shown) {
        return;
    }
    if (kind != BarKind::Tray) {
        exchange(kind, nullptr);
        return;
    }
    TrayBarOptions options;
    options.host = host;
    TrayBar::make(
        options, this,
        [this, kind, change = changes](std::unique_ptr<TrayBar> tray, const QString& error) {
            if (change != changes) {
                return;
            }
            if (!tray) {
                logLine(error);
            }
            exchange(kind, std::move(tray));
        });
}

ImageContext imageContextOf(const StatusBar& statusBar) {
    const auto* outer = dynamic_cast<const BarSwitch*>(&statusBar);
    const StatusBar& bar = outer != nullptr ? outer->current() : statusBar;
    ImageContext context;
    if (const auto* own = dynamic_cast<const ItemBar*>(&bar)) {
        context = own->imageContext();
    } else if (const auto* tray = dynamic_cast<const TrayBar*>(&bar)) {
        context = tray->wantedImages().front();
    }
    return context;
}

}  // namespace vostel
