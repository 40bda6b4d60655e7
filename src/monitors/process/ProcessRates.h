#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "monitors/process/ProcEntry.h"
#include "platform/ProcessSource.h"

namespace vostel {

// Processor use of every process between two readings of the native list.
class ProcessRates {
  public:
    // Readings closer than this would show little but the 10 ms grain of the kernel's counters.
    static constexpr double shortestInterval = 0.3;  // seconds
    // Over a longer time the mean says nothing about now. Callers ask every 2 to 6 s.
    static constexpr double longestInterval = 10;  // seconds

    // Takes a reading (records by ascending pid) made at `seconds` of Clock. CPU percent = time
    // used since the previous reading in percent of one processor, never below 0. A process that
    // started since then used all its time since then, so pids that are used again never spike.
    // False when there is nothing to show yet: the first reading, one too long after the previous
    // (or before it), which both begin anew. A reading too soon after the previous one is dropped
    // and the figures of that one stay.
    bool update(const std::vector<ProcessRecord>& records, double seconds);

    // The entries of the last successful update, without names.
    const std::vector<ProcEntry>& entries() const { return latest; }

    // The entries of one reading without processor use (0): memory needs no second one.
    static std::vector<ProcEntry> withoutRates(const std::vector<ProcessRecord>& records);

  private:
    struct Used {
        std::int32_t pid;
        double startSeconds;
        double cpuSeconds;
    };
    void remember(const std::vector<ProcessRecord>& records, double seconds);

    std::vector<Used> previous;  // by ascending pid
    std::optional<double> previousAt;
    std::vector<ProcEntry> latest;
    bool ready = false;
};

}  // namespace vostel
