#include "monitors/gpu/GPUAppRateTracker.h"

#include <utility>

namespace vostel {

std::map<int, double> GPUAppRateTracker::rates(const std::map<int, GPUClientUsage>& apps,
                                               double at) {
    std::map<int, double> times;
    for (const auto& [pid, usage] : apps) {
        times.emplace_hint(times.end(), pid, usage.gpuTimeNS);
    }
    const std::map<int, double> old = std::exchange(previous, std::move(times));
    const std::optional<double> oldAt = std::exchange(previousAt, at);
    std::map<int, double> result;
    if (!oldAt || !(at - *oldAt > 0)) {
        return result;
    }
    for (const auto& [pid, time] : previous) {
        const auto before = old.find(pid);
        if (before != old.end() && time - before->second > 0) {
            constexpr double nanosecondsInAMillisecond = 1e6;
            result[pid] = (time - before->second) / (at - *oldAt) / nanosecondsInAMillisecond;
        }
    }
    return result;
}

void GPUAppRateTracker::reset() {
    previous.clear();
    previousAt.reset();
}

}  // namespace vostel
