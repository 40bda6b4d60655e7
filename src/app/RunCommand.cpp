#include "app/RunCommand.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

#include <QApplication>
#include <QFile>

#include "app/AppDelegate.h"
#include "app/BarSwitch.h"
#include "app/ModuleTable.h"
#include "app/Relaunch.h"
#include "app/SignalWatcher.h"
#include "app/SingleInstance.h"
#include "core/Log.h"
#include "core/Notifier.h"
#include "statusbar/BusLink.h"
#include "statusbar/DockBar.h"
#include "statusbar/SessionBus.h"

namespace vostel {

namespace {

constexpr std::chrono::seconds patience{2};  // with a running program that does not answer yet

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
        // Without the second name a display that cannot be used would end the program.
        qputenv("QT_QPA_PLATFORM", display == Display::X11       ? "xcb;offscreen"
                                   : display == Display::Wayland ? "wayland;offscreen"
                                                                 : "offscreen");
    }
    DockBar::prepareProcess();
    if (!prepareSessionBus()) {
        logLine(QStringLiteral("the session's message bus does not answer; going on without it"));
    }
    return display;
}

// What the application object got hold of.
Display reachedDisplay(Display found) {
    if (found == Display::None || QGuiApplication::platformName() != QStringLiteral("offscreen")) {
        return found;
    }
    // Where the plugins come from: Debian has xcb in the package of the library itself, and
    // Wayland's apart.
    logLine(
        found == Display::Wayland
            ? QStringLiteral(
                  "the Wayland display cannot be used: nothing answers there, or Qt's plugin for "
                  "it (package qt6-wayland) is not installed; going on without it")
            : QStringLiteral("the X display cannot be used: Qt's plugin xcb does not load; with "
                             "QT_DEBUG_PLUGINS=1 it says why; going on without it"));
    return Display::None;
}

// What the user has to know of the settings file, and what follows from it.
void watchSettingsFile(AppDelegate& delegate) {
    DefaultsStore& store = delegate.services.defaults;
    if (store.isUnreadable()) {
        Notifier::post(QStringLiteral("Settings Cannot Be Read"), store.problem());
    }
    QObject::connect(&store, &DefaultsStore::foreignFileFound, &delegate, [&delegate] {
        Notifier::post(QStringLiteral("Settings Changed on Disk"),
                       QStringLiteral("Vostel starts again with the settings file that is there "
                                      "now. The last change made here was not saved."));
        delegate.exchange.relaunch([](const std::optional<QString>& error) {
            if (error) {
                logLine(QStringLiteral("cannot start again with it: %1").arg(*error));
            }
        });
    });
}

// True when this process is to be the one that runs. Else another one does, was asked for its
// settings window, and the user is told what is so.
bool becomesTheOne(SingleInstance& instance, int inheritedLock) {
    bool isFree = false;
    std::optional<bool> opens;
    SingleInstance::insist(patience, [&] {
        isFree = instance.acquire(std::exchange(inheritedLock, -1));
        if (!isFree) {
            opens = SingleInstance::askToShowSettings();
        }
        return isFree || opens;
    });
    if (!isFree) {
        std::printf("Vostel is already running%s\n",
                    opens.value_or(false)
                        ? "; its settings window opens"
                        : QFile::encodeName(
                              QStringLiteral("%1; its settings are in %2")
                                  .arg(opens ? QStringLiteral(" without a display") : QString(),
                                       settingsFilePath()))
                              .constData());
    }
    return isFree;
}

}  // namespace

int runProgram(const CommandLine& commandLine, int& argc, char** argv) {
    // Who read the output of the process before this one may have gone with it.
    std::signal(SIGPIPE, SIG_IGN);
    Handover handover;
    const Display found = prepareDisplay(commandLine.bar);
    QApplication::setDesktopFileName(QStringLiteral("com.vostel.app"));
    QApplication application(argc, argv);
    const Display display = reachedDisplay(found);
    QApplication::setApplicationName(QStringLiteral("vostel"));
    QApplication::setQuitOnLastWindowClosed(false);

    if (!handover.complete()) {
        return 0;
    }
    Relaunch relaunch(programsToStart());
    SingleInstance instance(runtimeFolder());
    if (!becomesTheOne(instance, handover.takeLock())) {
        return 0;
    }
    const auto session = BusLink::toSessionBus();
    AppServices services(makeLinuxPlatform(SystemRoots::ofThisMachine()), settingsFilePath());
    storeToFlush = &services.defaults;
    std::atexit(flushAtExit);
    int status = 0;
    {
        ItemOrder order(services.defaults, itemNames());
        BarSwitch bar(commandLine, display, services, order, *session);
        AppDelegate delegate(services, bar);
        delegate.hasDisplay = display != Display::None;
        bar.willSwitch = [&delegate] { delegate.moduleManager->stopAll(); };
        bar.didSwitch = [&delegate] { delegate.moduleManager->loadEnabledModules(); };
        if (!handover.isHandedOver()) {
            QObject::connect(&bar, &BarSwitch::readerGone, &application, &QCoreApplication::quit,
                             Qt::QueuedConnection);
        }
        SignalWatcher signals([&services] { services.defaults.flushFromElsewhere(); });
        QObject::connect(&signals, &SignalWatcher::quitRequested, &application,
                         &QCoreApplication::quit);
        QObject::connect(&application, &QGuiApplication::commitDataRequest, &delegate,
                         [&services] { services.defaults.flush(); });
        instance.showSettings = [&delegate] { return delegate.showSettings(); };
        delegate.exchange.relaunch = [&](const Relaunch::Done& done) {
            relaunch.start(instance.lock(), [&instance, done](const auto& error) {
                done(error);
                if (!error) {
                    instance.fallSilent();
                    QCoreApplication::exit();  // no open window may object
                }
            });
        };
        watchSettingsFile(delegate);
        instance.settings = [&store = services.defaults] {
            return SettingsTransfer::exported(store.values(), store).toXml();
        };
        instance.takeSettings = [&delegate](const QByteArray& bytes, SettingsExchange::Done done) {
            delegate.exchange.import(bytes, std::move(done));
        };
        delegate.didFinishLaunching();
        instance.listen(*session);
        status = QApplication::exec();
        services.defaults.flush();
        endWithinASecond();
        delegate.willTerminate();
        instance.showSettings = nullptr;
        instance.settings = nullptr;
        instance.takeSettings = nullptr;
    }
    storeToFlush = nullptr;
    return status;
}

}  // namespace vostel
