#include "app/AppDelegate.h"

#include <unistd.h>

#include <chrono>

#include <QCoreApplication>
#include <QTimer>

#include "app/LoginItem.h"
#include "app/ModuleTable.h"
#include "app/settings/SettingsSidebar.h"
#include "core/GiveBack.h"
#include "platform/LineOutput.h"

namespace vostel {

namespace {

constexpr double batteryFactor = 2;  // of every interval
// What only the start needed is given back then.
constexpr std::chrono::seconds startIsOver{15};

}  // namespace

AppDelegate::AppDelegate(AppServices& appServices, StatusBar& statusBar)
    : services(appServices),
      context{services.platform,
              services.background,
              services.scheduler,
              services.defaults,
              services.notifications,
              services.global,
              statusBar,
              nullptr,
              [this](const QString& panel) { showSettings(panel); },
              [] { QCoreApplication::quit(); },
              [this] { transferPanels.exportSettings(); },
              [this] { transferPanels.importSettings(); }},
      moduleManager(
          std::make_unique<ModuleManager>(services.defaults, makeRegistry(services, context))),
      settingsWindow(services, context),
      exchange(services.defaults, services.background),
      transferPanels(services.defaults, services.background, exchange,
                     [this] { return settingsWindow.widget(); }),
      dockIcon(services.app, settingsWindow, [this] { showSettings(); }) {
    context.modules = moduleManager.get();
    moduleManager->onEnabledChanged = [this](const QString&) {
        services.notifications.post(SettingsSidebar::modulesChanged);
    };
    settingsWindow.onOpenChanged = [this] { dockIcon.apply(); };
    subscription = services.notifications.subscribe(AppSettings::changeNotification,
                                                    [this] { settingsChanged(); });
}

AppDelegate::~AppDelegate() {
    willTerminate();
}

void AppDelegate::didFinishLaunching() {
    moduleManager->loadEnabledModules();
    settingsChanged();
    services.updates->start();
    LoginItem::ofThisProgram().repair();
    if (services.isFirstRun && !showSettings()) {
        writeLine(STDOUT_FILENO,
                  "The settings are in " + services.defaults.filePath().toStdString());
    }
    QTimer::singleShot(startIsOver, this, [this] { giveBackMemory(services.background); });
}

void AppDelegate::settingsChanged() {
    dockIcon.apply();
    const bool wanted = services.app.slowOnBattery();
    if (wanted && !battery) {
        battery =
            std::make_unique<BatteryWatch>(QDBusConnection::systemBus(), [this](bool onBattery) {
                services.scheduler.setIntervalFactor(onBattery ? batteryFactor : 1);
            });
    } else if (!wanted && battery) {
        battery.reset();
        services.scheduler.setIntervalFactor(1);
    }
}

bool AppDelegate::showSettings(const QString& panel) {
    if (hasDisplay) {
        settingsWindow.show(panel);
    }
    return hasDisplay;
}

void AppDelegate::willTerminate() {
    if (!terminated) {
        terminated = true;
        moduleManager->stopAll();
        services.defaults.flush();
    }
}

}  // namespace vostel
