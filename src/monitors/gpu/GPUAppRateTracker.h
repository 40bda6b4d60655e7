#pragma once

#include <map>
#include <optional>

#include "monitors/gpu/GPUClientUsage.h"

namespace vostel {

struct GPUAppRateTracker {
    std::map<int, double> previous;    // accumulated nanoseconds by process id
    std::optional<double> previousAt;  // seconds

    // Milliseconds of GPU time for each second since the previous call, of each process that was
    // there then and made progress. Empty on the first call and when `at` did not move on.
    std::map<int, double> rates(const std::map<int, GPUClientUsage>& apps, double at);

    // Forgets the previous call: after a pause the next one starts anew.
    void reset();
};

}  // namespace vostel
