#pragma once

#include "platform/MemorySource.h"

namespace vostel {

struct MemoryUsage {
    double usedBytes = 0;
    double totalBytes = 0;

    // Used of total, 0 ... 1; 0 without a total.
    double fraction() const;
    bool operator==(const MemoryUsage&) const = default;
};

// Used physical memory: active, wired and compressed. What can be reclaimed at once is not used.
class MemoryMonitor {
  public:
    explicit MemoryMonitor(MemorySource& source);

    // usedBytes is 0 when the source fails.
    MemoryUsage sample();

  private:
    MemorySource& source;
    double total;
};

}  // namespace vostel
