#pragma once

#include <functional>

#include "monitors/memory/MemoryViewModel.h"
#include "monitors/process/UsagePopover.h"

namespace vostel {

// Used memory and its history, and who holds most of it.
class MemoryPopover : public UsagePopover {
    Q_OBJECT

  public:
    // Follows `model` while it lives.
    MemoryPopover(MemoryViewModel& model, const ModuleSettings& settings,
                  std::function<void()> openSettings);
};

}  // namespace vostel
