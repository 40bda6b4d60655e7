#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "monitors/process/ProcMetric.h"

namespace vostel {

// One process of a snapshot.
struct ProcEntry {
    std::int32_t pid = 0;
    double cpu = 0;  // percent of one processor
    double rss = 0;  // resident size, KiB
    std::string name = {};
    double startSeconds = -1;  // as in ProcessRecord; below 0 when unknown
};

// The `limit` entries with the largest value, largest first; equals by ascending pid.
std::vector<ProcEntry> topEntries(std::vector<ProcEntry> entries, ProcMetric metric, int limit);

}  // namespace vostel
