#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "monitors/cpu/CPULoad.h"
#include "platform/CPUSource.h"

namespace vostel {

// Turns cumulative processor ticks into loads.
class CPUMonitor {
  public:
    explicit CPUMonitor(CPUSource& cpuSource) : source(cpuSource) {}

    // The load since the previous call. The first call, and the first after the number of
    // processors changed, yields zeros. A failed reading yields no processors and load 0, and
    // leaves the previous counters as they are.
    CPULoad sample();

    // Forgets the previous counters: the next sample yields zeros. For a gap in time whose load
    // nobody wants to see as one reading.
    void prime() { previous.reset(); }

  private:
    CPUSource& source;
    std::optional<std::vector<std::int32_t>> previous;
};

// The loads of the efficiency and of the performance processors.
struct CoreGroups {
    std::vector<double> performance;
    std::vector<double> efficiency;
};

// How many processors of each kind there are.
struct CoreLayout {
    int performance = 0;
    int efficiency = 0;

    bool isSplit() const { return performance >= 1 && efficiency >= 1; }
    // Efficiency processors come first in `perCore`. With one kind only, or with no more entries
    // than efficiency processors, all of them are performance processors.
    CoreGroups split(const std::vector<double>& perCore) const;
};

}  // namespace vostel
