#include "monitors/process/ProcEntry.h"

#include <algorithm>

namespace vostel {

std::vector<ProcEntry> topEntries(std::vector<ProcEntry> entries, ProcMetric metric, int limit) {
    const auto kept = static_cast<std::ptrdiff_t>(
        std::min(entries.size(), static_cast<std::size_t>(std::max(limit, 0))));
    std::partial_sort(entries.begin(), entries.begin() + kept, entries.end(),
                      [metric](const ProcEntry& a, const ProcEntry& b) {
                          const double left = metric == ProcMetric::cpu ? a.cpu : a.rss;
                          const double right = metric == ProcMetric::cpu ? b.cpu : b.rss;
                          return left != right ? left > right : a.pid < b.pid;
                      });
    entries.resize(static_cast<std::size_t>(kept));
    return entries;
}

}  // namespace vostel
