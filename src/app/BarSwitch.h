#pragma once

#include <functional>
#include <memory>

#include <QDBusServiceWatcher>

#include "app/AppServices.h"
#include "app/BarChoice.h"
#include "core/NotificationCenter.h"
#include "statusbar/BusLink.h"
#include "statusbar/StatusBar.h"
#include "statusbar/TrayBar.h"
#include "statusbar/TrayProbe.h"

namespace vostel {

// The bar that the program shows its items in: one of the three bars, which follows the settings
// while it runs.
class BarSwitch : public StatusBar {
    Q_OBJECT

  public:
    // Opens the bar that the command line asks for, else the settings. Borrows everything.
    BarSwitch(const CommandLine& commandLine, Display display, AppServices& services,
              ItemOrderStore& order, const BusLink& session);
    ~BarSwitch() override;

    std::unique_ptr<StatusItem> makeItem(const QString& autosaveName) override;
    double thickness() const override;

    // The bar that is open now, never Automatic.
    BarKind kind() const { return shown; }
    StatusBar& current() const { return *bar; }

    // Called around the change to another kind of bar: no item may be left after the first. What
    // the change depends on is asked without waiting, so it comes a while after the setting.
    std::function<void()> willSwitch;
    std::function<void()> didSwitch;

  Q_SIGNALS:
    // Who read the off-screen bar's lines is gone for good.
    void readerGone();

  private:
    bool asksForTray(BarKind wanted) const;
    TrayProbeOptions probeOptions() const { return {{}, services.platform.roots.proc}; }
    BarKind choose(BarKind wanted, const TrayHost& host) const;
    void open();
    void settingsChanged();
    void replace(BarKind wanted);
    void exchange(BarKind kind, const TrayHost& host);
    void exchange(BarKind kind, std::unique_ptr<TrayBar> tray);
    static BarKind possible(BarKind kind, bool hasTray);
    void put(std::unique_ptr<TrayBar> tray);
    BarKind wanted() const;
    void watchForTray();

    const CommandLine& commandLine;
    const Display display;
    AppServices& services;
    ItemOrderStore& order;
    const BusLink& session;
    std::unique_ptr<StatusBar> bar;
    BarKind shown = BarKind::Offscreen;
    QString storedKind;
    int changes = 0;  // of the wish; an answer to an earlier one counts no more
    std::unique_ptr<QDBusServiceWatcher> trayWatch;
    NotificationCenter::Subscription subscription;
};

// What an image has to know of the bar that it lands in.
ImageContext imageContextOf(const StatusBar& bar);

}  // namespace vostel
