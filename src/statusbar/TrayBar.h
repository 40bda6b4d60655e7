#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QDBusServiceWatcher>
#include <QTimer>

#include "statusbar/BusLink.h"
#include "statusbar/DesktopAppearance.h"
#include "statusbar/StatusBar.h"
#include "statusbar/TrayHost.h"

namespace vostel {

class TrayItem;

struct TrayBarOptions {
    QString busAddress;  // empty: the session's
    std::string proc = "/proc";
    std::optional<Appearance> appearance;  // empty: as the desktop states it
    double thickness = 22.0;               // points
    TrayHost host;                         // what a probe found; until the bar has looked itself
};

// The desktop's own tray as a bar: every item is a StatusNotifierItem over D-Bus. Where no tray is
// running it waits for one; a tray, or a whole bus, that dies and comes back gets its items again.
// The first item needs a QGuiApplication.
class TrayBar final : public StatusBar {
    Q_OBJECT

  public:
    // Null when the session has no bus; `error` then says why. Waits for the bus, one second at
    // the most: for the start of the program only.
    static std::unique_ptr<TrayBar> make(const TrayBarOptions& options, QString* error);
    // The same without waiting: `done` is called from the event loop, unless `context` is gone.
    using Made = std::function<void(std::unique_ptr<TrayBar> bar, const QString& error)>;
    static void make(const TrayBarOptions& options, QObject* context, Made done);
    ~TrayBar() override;

    std::unique_ptr<StatusItem> makeItem(const QString& autosaveName) override;
    double thickness() const override { return options.thickness; }

    // For the bar's items.
    bool hasBus() const { return link.isOpen(); }
    bool hasWatcher() const { return watcherPresent; }
    bool needsMenu() const { return menuNeeded; }
    std::vector<ImageContext> wantedImages() const;
    // Hosts show items in the order in which they register: one at a time does so, in the order in
    // which they were made. Each calls this when its own turn may have changed.
    void nextTurn();
    void remove(const TrayItem& item);

  Q_SIGNALS:
    // Another process keeps the list of items, or none.
    void watcherChanged();
    void imagesWanted();
    void needsMenuChanged();

  private Q_SLOTS:
    void findHost();

  private:
    TrayBar(const TrayBarOptions& options, const QDBusConnection& bus);
    static std::unique_ptr<TrayBar> on(const TrayBarOptions& options, const QDBusConnection& bus,
                                       QString* error);
    void attach();
    void setWatcher(bool present);
    void takeHost(const TrayHost& found);

    TrayBarOptions options;
    BusLink link;
    std::unique_ptr<QDBusServiceWatcher> watcherWatch;
    std::unique_ptr<QDBusServiceWatcher> hostWatch;
    std::unique_ptr<DesktopAppearance> portal;
    std::vector<TrayItem*> items;
    QTimer watcherSettles;
    bool watcherPresent = false;
    bool saidWaiting = false;
    bool finding = false;    // a search is under way,
    bool findAgain = false;  // and what it looks at has changed since
    ImageShape shape;
    bool menuNeeded;
};

}  // namespace vostel
