#pragma once

#include <memory>
#include <vector>

#include <QTimer>

#include "core/ModuleSettings.h"
#include "core/Modules.h"
#include "core/NotificationCenter.h"
#include "core/OncePerTurn.h"
#include "core/TickScheduler.h"
#include "item/ShownItem.h"
#include "ui/Popover.h"

namespace vostel {

// The plumbing that every item of its own values shares: timer, popover, observers, embedding. A
// module states only what is its own: how it samples, what it draws, what its popover holds.
class ItemModule : public ShownItem, public EmbeddableModule {
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

    // Both bases ask for it.
    std::optional<StatusImage> menubarImage(const ImageContext& context) override = 0;
    // Samples, appends to the history, updates the view model, renders.
    void tick() override = 0;

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

  private:
    void begin();
    void startTimer();
    void settingsChanged();
    void clicked(const StatusItemClick& click) final;
    void imagesWanted() final { render(); }
    void closePopover() final;
    void popoverClosed();

    ModuleSettings& settings;
    std::unique_ptr<TickScheduler::Tick> timer;
    std::unique_ptr<Popover> popover;
    QTimer popoverRelease;
    std::vector<NotificationCenter::Subscription> subscriptions;
    bool embedded = false;
    bool running = false;
    // Many fields may change in one go (a revert clears six): one restart and one image serve all.
    OncePerTurn changes{this, [this] { settingsChanged(); }};
};

}  // namespace vostel
