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
    bool isReady() const final { return isMeasured() || waited; }

    // Both bases ask for it.
    std::optional<StatusImage> menubarImage(const ImageContext& context) override = 0;
    // Samples, appends to the history, updates the view model, renders.
    void tick() override = 0;

  protected:
    ItemModule(AppContext& context, ItemIdentity identity, ModuleSettings& settings);

    // The popover, bound to the view model. Made when it is first opened and again after it was
    // given back.
    virtual std::unique_ptr<Popover> makePopover() = 0;
    // Whether what the item shows has been measured, or is known not to be there. What is a
    // difference between two readings is not by the first. Until then nothing is put into the bar,
    // for two seconds at most.
    virtual bool isMeasured() const { return true; }
    // Whether another reading shortly after the last one is worth it.
    virtual bool wantsReadingSoon() const { return !isMeasured(); }
    // Takes another reading in a quarter of a second, and further ones while wantsReadingSoon().
    void readSoon();

    // What a module has beside its main timer: called after the timer began, before it ends.
    virtual void didStart() {}
    virtual void willStop() {}

    // Draws the current image into the status item, or tells the combined item about it.
    void render();
    bool isPopoverShown() const { return popover && popover->isVisible(); }
    double effInterval() const { return settings.effInterval(); }

  private:
    void begin();
    void readAgain();
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
    QTimer soon;  // the next of readSoon()
    int readingsLeft = 0;
    bool beginning = false;  // in the first reading, whose image nobody gets
    bool waited = false;     // long enough
    bool presented = false;  // its image has been given out since
    std::vector<NotificationCenter::Subscription> subscriptions;
    bool embedded = false;
    bool running = false;
    // Many fields may change in one go (a revert clears six): one restart and one image serve all.
    OncePerTurn changes{this, [this] { settingsChanged(); }};
};

}  // namespace vostel
