#pragma once

#include <functional>
#include <memory>

#include <QDBusServiceWatcher>

#include "app/AppServices.h"
#include "app/BarChoice.h"
#include "core/NotificationCenter.h"
#include "statusbar/StatusBar.h"

namespace vostel {

// The bar that the program shows its items in: one of the three bars, which follows the settings
// while it runs.
class BarSwitch : public StatusBar {
    Q_OBJECT

  public:
    // Opens the bar that the command line asks for, else the settings. Borrows everything.
    BarSwitch(const CommandLine& commandLine, Display display, AppServices& services,
              ItemOrderStore& order);
    ~BarSwitch() override;

    std::unique_ptr<StatusItem> makeItem(const QString& autosaveName) override;
    double thickness() const override;

    // The bar that is open now, never Automatic.
    BarKind kind() const { return shown; }
    StatusBar& current() const { return *bar; }

    // Called around the change to another kind of bar: no item may be left after the first.
    std::function<void()> willSwitch;
    std::function<void()> didSwitch;

  private:
    void open(BarKind wanted);
    void settingsChanged();
    void replace(BarKind wanted);
    BarKind wanted() const;
    void watchForTray();

    const CommandLine& commandLine;
    const Display display;
    AppServices& services;
    ItemOrderStore& order;
    std::unique_ptr<StatusBar> bar;
    BarKind shown = BarKind::Offscreen;
    QString storedKind;
    std::unique_ptr<QDBusServiceWatcher> trayWatch;
    NotificationCenter::Subscription subscription;
};

// What an image has to know of the bar that it lands in.
ImageContext imageContextOf(const StatusBar& bar);

}  // namespace vostel
