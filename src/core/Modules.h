#pragma once

#include <functional>
#include <optional>

#include "statusbar/StatusImage.h"

namespace vostel {

class Popover;

// The unit of the program: one item with its sampler, settings, timer and popover.
class MenubarModule {
  public:
    virtual ~MenubarModule() = default;

    // Creates the status item, subscribes to the settings, starts the timer.
    virtual void start() = 0;
    // The inverse of start(). Called once for each start.
    virtual void stop() = 0;
};

// A module that the combined item can draw inside its own.
class EmbeddableModule : public MenubarModule {
  public:
    // start() without a status item.
    virtual void startEmbedded() = 0;
    // Identical to stop().
    virtual void stopEmbedded() = 0;

    // The current image; nothing when there is nothing to draw yet.
    virtual std::optional<StatusImage> menubarImage(const ImageContext& context) = 0;

    // The popover, made on first use; owned by the module.
    virtual Popover* detailPopover() = 0;
    virtual void detailPopoverWillShow() = 0;
    virtual void detailPopoverDidClose() = 0;

    // Called instead of setting a status item's image while embedded.
    std::function<void()> onImageChanged;
};

}  // namespace vostel
