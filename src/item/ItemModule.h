#pragma once

#include <memory>
#include <vector>

#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QVariantMap>

#include "core/AppContext.h"
#include "core/ModuleSettings.h"
#include "core/Modules.h"
#include "core/NotificationCenter.h"
#include "core/TickScheduler.h"
#include "statusbar/StatusBar.h"
#include "ui/Popover.h"

namespace vostel {

struct ItemIdentity {
    QString id;         // "cpu"; the autosave name is "vostel." + id
    QString shortName;  // "CPU", before " Settings…" in the context menu
    QString toolTip;    // "CPU usage"
};

// The plumbing that every item shares: status item, timer, popover, observers, click, context
// menu, embedding. A module states only what is its own: how it samples, what it draws, what its
// popover holds.
class ItemModule : public QObject, public EmbeddableModule {
    Q_OBJECT

  public:
    ~ItemModule() override;

    void start() final;
    void stop() final;
    void startEmbedded() final;
    void stopEmbedded() final { stop(); }
    Popover* detailPopover() final;
    void detailPopoverWillShow() override { tick(); }
    void detailPopoverDidClose() override {}

    const ItemIdentity& identity() const { return who; }

    // What the item shows, as one short text ("CPU 12 %"): tool tip, accessible value, text bar.
    virtual QString valueText() const = 0;
    // The current values for `vostel status --json`; fractions 0 ... 1, bytes, bytes per second.
    virtual QVariantMap statusValues() const = 0;

    // Samples, appends to the history, updates the view model, renders.
    virtual void tick() = 0;

  Q_SIGNALS:
    void rendered();  // there is a new image

  protected:
    ItemModule(AppContext& context, ItemIdentity identity, ModuleSettings& settings);

    // The popover, bound to the view model. Made when it is first opened and again after it was
    // given back.
    virtual std::unique_ptr<Popover> makePopover() = 0;
    // What a module has beside its main timer: called after the timer began, before it ends.
    virtual void didStart() {}
    virtual void willStop() {}

    // Draws the current image into the status item, or tells the combined item about it.
    void render();
    bool isPopoverShown() const { return popover && popover->isVisible(); }
    double effInterval() const { return settings.effInterval(); }
    void openSettingsPanel() { context.openSettings(who.id); }

    AppContext& context;

  private:
    void begin();
    void startTimer();
    void settingsChanged();
    void handleClick(const StatusItemClick& click);
    void showMenu(const StatusItemClick& click);
    void togglePopover(const StatusItemClick& click);
    void popoverClosed();

    const ItemIdentity who;
    ModuleSettings& settings;
    std::unique_ptr<StatusItem> statusItem;
    std::unique_ptr<TickScheduler::Tick> timer;
    std::unique_ptr<Popover> popover;
    QTimer popoverRelease;
    std::vector<NotificationCenter::Subscription> subscriptions;
    QPointer<QMenu> openMenu;
    bool embedded = false;
    bool running = false;
    bool changePending = false;
};

}  // namespace vostel
