#pragma once

#include <functional>
#include <memory>

#include <QObject>

#include "app/AppServices.h"
#include "app/BatteryWatch.h"
#include "app/DockIcon.h"
#include "app/SettingsExchange.h"
#include "app/TransferPanels.h"
#include "app/settings/SettingsWindowController.h"
#include "core/AppContext.h"
#include "core/ModuleManager.h"

namespace vostel {

// The program's life: seeds a first run, starts the enabled modules, stops them at the end.
class AppDelegate : public QObject {
    Q_OBJECT

  public:
    // Borrows both; `statusBar` may be any of the bars.
    AppDelegate(AppServices& services, StatusBar& statusBar);
    ~AppDelegate() override;

    void didFinishLaunching();
    // Stops every module once and writes the settings.
    void willTerminate();

    // Opens the settings window, at a module's page or at the first one. False where nobody would
    // see it.
    bool showSettings(const QString& panel = {});

    // Whether there is a display for windows; to be set before the launch is finished.
    bool hasDisplay = true;

    AppServices& services;
    AppContext context;
    std::unique_ptr<ModuleManager> moduleManager;
    SettingsWindowController settingsWindow;
    SettingsExchange exchange;
    TransferPanels transferPanels;
    DockIcon dockIcon;

  private:
    void settingsChanged();

    std::unique_ptr<BatteryWatch> battery;  // while the settings want to know
    NotificationCenter::Subscription subscription;
    bool terminated = false;
};

}  // namespace vostel
