#include "monitors/process/ProcessRates.h"

#include <algorithm>

namespace vostel {

std::vector<ProcEntry> ProcessRates::withoutRates(const std::vector<ProcessRecord>& records) {
    std::vector<ProcEntry> entries;
    entries.reserve(records.size());
    for (const ProcessRecord& record : records) {
        entries.push_back({.pid = record.pid,
                           .rss = static_cast<double>(record.residentBytes) / 1024,
                           .startSeconds = record.startSeconds});
    }
    return entries;
}

void ProcessRates::remember(const std::vector<ProcessRecord>& records, double seconds) {
    previous.clear();
    for (const ProcessRecord& record : records) {
        previous.push_back({record.pid, record.startSeconds, record.cpuSeconds});
    }
    previousAt = seconds;
}

bool ProcessRates::update(const std::vector<ProcessRecord>& records, double seconds) {
    const double elapsed = previousAt ? seconds - *previousAt : -1;
    if (elapsed < 0 || elapsed > longestInterval) {
        remember(records, seconds);
        latest.clear();
        ready = false;
        return false;
    }
    if (elapsed < shortestInterval) {
        return ready;
    }
    latest = withoutRates(records);
    auto before = previous.begin();
    for (std::size_t i = 0; i < records.size(); ++i) {
        const ProcessRecord& record = records[i];
        while (before != previous.end() && before->pid < record.pid) {
            ++before;
        }
        double used = 0;
        if (before != previous.end() && before->pid == record.pid &&
            before->startSeconds == record.startSeconds) {
            used = record.cpuSeconds - before->cpuSeconds;
        } else if (constexpr double startGrain = 0.01;
                   record.startSeconds >= *previousAt - startGrain) {
            used = record.cpuSeconds;
        }
        // Otherwise an old process that the previous reading could not see: nothing is known.
        latest[i].cpu = std::max(used, 0.0) / elapsed * 100;
    }
    remember(records, seconds);
    ready = true;
    return true;
}

}  // namespace vostel
