#pragma once

#include <optional>

#include "platform/SourceHealth.h"

namespace vostel {

// Physical memory in use, in bytes, in three parts that do not overlap.
struct MemoryCounters {
    double active = 0;      // held by programs: anonymous and shared memory
    double wired = 0;       // held by the system and not reclaimable
    double compressed = 0;  // holds compressed pages
};

class MemorySource {
  public:
    virtual ~MemorySource() = default;

    SourceHealth health;  // of the readings

    // Nothing when it cannot be read.
    virtual std::optional<MemoryCounters> counters() = 0;

    // Physical memory in bytes; 0 when unknown.
    virtual double physicalMemory() = 0;
};

}  // namespace vostel
