#pragma once

#include <cstdint>
#include <vector>

#include "platform/SourceHealth.h"

namespace vostel {

// Cumulative processor time since boot.
class CPUSource {
  public:
    virtual ~CPUSource() = default;

    SourceHealth health;  // of the readings

    // Four counters per online processor, in the order user, system, idle, nice, in clock ticks.
    // Processors come in kernel order, but with efficiency processors first where the machine
    // tells the two kinds apart. The counters are cut to 32 bits and wrap; only differences mean
    // anything. Empty when they cannot be read.
    virtual std::vector<std::int32_t> ticks() = 0;

    struct CoreCounts {
        int performance = 0;
        int efficiency = 0;  // both 0 when the machine has one kind only
    };
    virtual CoreCounts coreCounts() = 0;

    // Processors that are online, at least 1.
    virtual int activeProcessorCount() = 0;
};

}  // namespace vostel
