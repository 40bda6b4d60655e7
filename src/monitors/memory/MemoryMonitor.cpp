#include "monitors/memory/MemoryMonitor.h"

#include <algorithm>

namespace vostel {

double MemoryUsage::fraction() const {
    return totalBytes > 0 ? std::clamp(usedBytes / totalBytes, 0.0, 1.0) : 0.0;
}

MemoryMonitor::MemoryMonitor(MemorySource& memorySource)
    : source(memorySource), total(memorySource.physicalMemory()) {}

MemoryUsage MemoryMonitor::sample() {
    if (!(total > 0)) {
        total = source.physicalMemory();  // it could not be read before
    }
    MemoryUsage usage{0, total};
    if (const auto counters = source.counters()) {
        usage.usedBytes = counters->active + counters->wired + counters->compressed;
    }
    return usage;
}

}  // namespace vostel
