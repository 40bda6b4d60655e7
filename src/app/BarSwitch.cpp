#include "app/BarSwitch.h"

#include <chrono>
#include <cstdio>

#include <QDBusConnection>
#include <QFile>
#include <QTimer>

#include "core/Log.h"
#include "statusbar/DockBar.h"
#include "statusbar/OffscreenBar.h"
#include "statusbar/TrayBar.h"
#include "statusbar/TrayProbe.h"

namespace vostel {

namespace {

using namespace std::chrono_literals;

constexpr auto hostSettles = 2s;

std::unique_ptr<StatusBar> makeOffscreenBar(const CommandLine& commandLine, ItemOrderStore& order) {
    OffscreenBarOptions options;
    options.imagePath = commandLine.imagePath.isEmpty()
                            ? runtimeFolder() + QStringLiteral("/vostel-bar.png")
                            : commandLine.imagePath;
    options.text = stdout;
    std::printf("The bar is drawn into %s\n", QFile::encodeName(options.imagePath).constData());
    std::fflush(stdout);
    return std::make_unique<OffscreenBar>(order, options);
}

}  // namespace

BarSwitch::BarSwitch(const CommandLine& asked, Display foundDisplay, AppServices& appServices,
                     ItemOrderStore& orderStore)
    : commandLine(asked),
      display(foundDisplay),
      services(appServices),
      order(orderStore),
      storedKind(services.app.bar()) {
    open(wanted());
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
    if (display == Display::None || !QDBusConnection::sessionBus().isConnected()) {
        return;
    }
    trayWatch =
        std::make_unique<QDBusServiceWatcher>(trayWatcherService, QDBusConnection::sessionBus(),
                                              QDBusServiceWatcher::WatchForRegistration);
    connect(trayWatch.get(), &QDBusServiceWatcher::serviceRegistered, this, [this] {
        // Hosts report to the watcher a moment after it appeared.
        QTimer::singleShot(hostSettles, this, [this] {
            probeTray(TrayProbeOptions{.busAddress = {}, .proc = services.platform.roots.proc},
                      this, [this](const TrayHost& host) {
                          if (host.keepsWideImages && shown == BarKind::Dock &&
                              wanted() == BarKind::Automatic) {
                              replace(BarKind::Automatic);
                          }
                      });
        });
    });
}

void BarSwitch::open(BarKind wanted) {
    BarSurroundings surroundings{display, false, false};
    TrayHost host;
    if (display != Display::None && wanted != BarKind::Offscreen) {
        host = probeTray(TrayProbeOptions{.busAddress = {}, .proc = services.platform.roots.proc});
        surroundings.hasTrayHost = host.host;
        surroundings.hostKeepsWideImages = host.keepsWideImages;
    }
    QString complaint;
    shown = chooseBar(wanted, surroundings, &complaint);
    if (!complaint.isEmpty()) {
        logLine(QStringLiteral("%1; using the %2 bar").arg(complaint, textOf(shown)));
    }
    if (shown == BarKind::Tray) {
        TrayBarOptions options;
        options.host = host;
        QString error;
        bar = TrayBar::make(options, &error);
        if (bar) {
            return;
        }
        logLine(error);
        shown = BarKind::Dock;
    }
    if (shown == BarKind::Dock && DockBar::isAvailable()) {
        bar = std::make_unique<DockBar>(order, services.app.dockBarOptions());
        return;
    }
    shown = BarKind::Offscreen;
    bar = makeOffscreenBar(commandLine, order);
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
    if (wanted == shown) {
        return;
    }
    if (willSwitch) {
        willSwitch();
    }
    bar.reset();
    open(wanted);
    if (didSwitch) {
        didSwitch();
    }
    services.notifications.post(AppSettings::changeNotification);
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
