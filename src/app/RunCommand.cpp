#include "app/RunCommand.h"

#include <cstdio>
#include <cstdlib>

#include <QApplication>
#include <QDir>
#include <QIcon>

#include "app/AppDelegate.h"
#include "app/BarChoice.h"
#include "app/ModuleTable.h"
#include "app/SignalWatcher.h"
#include "app/SingleInstance.h"
#include "core/Log.h"
#include "statusbar/DockBar.h"
#include "statusbar/OffscreenBar.h"
#include "statusbar/TrayBar.h"
#include "statusbar/TrayProbe.h"

namespace vostel {

namespace {

const QString barKey = QStringLiteral("app.bar");

// A lost X server ends the process inside the windowing library; what is not written yet is written
// on that way out, too.
DefaultsStore* storeToFlush = nullptr;
void flushAtExit() {
    if (storeToFlush != nullptr) {
        storeToFlush->flush();
    }
}

// Before the application object: which windowing system it connects to.
Display prepareDisplay(std::optional<BarKind> asked) {
    const Display display = asked == BarKind::Offscreen ? Display::None : findDisplay();
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || display == Display::None) {
        qputenv("QT_QPA_PLATFORM", display == Display::X11       ? "xcb"
                                   : display == Display::Wayland ? "wayland"
                                                                 : "offscreen");
    }
    DockBar::prepareProcess();
    return display;
}

BarKind wantedBar(const CommandLine& commandLine, const DefaultsStore& defaults) {
    if (commandLine.bar) {
        return *commandLine.bar;
    }
    const QString stored = defaults.values().text(barKey).value_or(QString());
    return barKindFromText(stored).value_or(BarKind::Automatic);
}

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

std::unique_ptr<StatusBar> makeBar(BarKind kind, const CommandLine& commandLine, ItemOrderStore& order,
                                   const TrayHost& host) {
    if (kind == BarKind::Tray) {
        TrayBarOptions options;
        options.host = host;
        QString error;
        if (auto bar = TrayBar::make(options, &error)) {
            return bar;
        }
        logLine(error);
        kind = DockBar::isAvailable() ? BarKind::Dock : BarKind::Offscreen;
    }
    if (kind == BarKind::Dock) {
        return std::make_unique<DockBar>(order, DockBarOptions());
    }
    return makeOffscreenBar(commandLine, order);
}

std::unique_ptr<StatusBar> chooseAndMakeBar(const CommandLine& commandLine, Display display,
                                            AppServices& services, ItemOrderStore& order) {
    const BarKind wanted = wantedBar(commandLine, services.defaults);
    BarSurroundings surroundings{display, false, false};
    TrayHost host;
    if (display != Display::None && wanted != BarKind::Offscreen) {
        host = probeTray(TrayProbeOptions{.busAddress = {}, .proc = services.platform.roots.proc});
        surroundings.hasTrayHost = host.host;
        surroundings.hostKeepsWideImages = host.keepsWideImages;
    }
    QString complaint;
    const BarKind kind = chooseBar(wanted, surroundings, &complaint);
    if (!complaint.isEmpty()) {
        logLine(QStringLiteral("%1; using the %2 bar").arg(complaint, textOf(kind)));
    }
    return makeBar(kind, commandLine, order, host);
}

}  // namespace

int runProgram(const CommandLine& commandLine, int& argc, char** argv) {
    const Display display = prepareDisplay(commandLine.bar);
    QApplication::setDesktopFileName(QStringLiteral("com.vostel.app"));
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("vostel"));
    QApplication::setApplicationDisplayName(QStringLiteral("Vostel"));
    QApplication::setQuitOnLastWindowClosed(false);

    SingleInstance instance(runtimeFolder());
    if (!instance.acquire()) {
        const bool asked = SingleInstance::askToShowSettings();
        std::printf("Vostel is already running%s\n", asked ? "; its settings window opens" : "");
        return 0;
    }
    AppServices services(makeLinuxPlatform(SystemRoots::ofThisMachine()), settingsFilePath());
    storeToFlush = &services.defaults;
    std::atexit(flushAtExit);
    int status = 0;
    {
        ItemOrder order(services.defaults, itemNames());
        const auto bar = chooseAndMakeBar(commandLine, display, services, order);
        AppDelegate delegate(services, *bar);
        SignalWatcher signals;
        QObject::connect(&signals, &SignalWatcher::quitRequested, &application, &QCoreApplication::quit);
        QObject::connect(&application, &QGuiApplication::commitDataRequest, &delegate,
                         [&services] { services.defaults.flush(); });
        QObject::connect(&instance, &SingleInstance::showSettingsRequested, &delegate,
                         [&delegate] { delegate.showSettings(); });
        delegate.didFinishLaunching();
        instance.listen();
        status = QApplication::exec();
        delegate.willTerminate();
    }
    storeToFlush = nullptr;
    return status;
}

}  // namespace vostel
