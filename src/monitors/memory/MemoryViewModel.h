#pragma once

#include "monitors/memory/MemoryMonitor.h"
#include "monitors/process/UsageViewModel.h"

namespace vostel {

// What the memory popover shows: the history is that of the used fraction, the top processes'
// values are resident bytes.
struct MemoryViewModel : UsageViewModel {
    QProperty<MemoryUsage> usage;
};

}  // namespace vostel
