#include "monitors/cpu/CPUMonitor.h"

#include <algorithm>
#include <numeric>

namespace vostel {

namespace {

// The counters are 32 bits wide and wrap: the difference is taken modulo 2^32 and read as signed.
double difference(std::int32_t now, std::int32_t before) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(now) -
                                     static_cast<std::uint32_t>(before));
}

}  // namespace

CPULoad CPUMonitor::sample() {
    std::vector<std::int32_t> current = source.ticks();
    CPULoad load;
    if (current.empty()) {
        return load;
    }
    const std::size_t count = current.size() / 4;
    load.perCore.assign(count, 0.0);
    if (previous && previous->size() == current.size()) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto delta = [&](std::size_t field) {
                return difference(current[i * 4 + field], (*previous)[i * 4 + field]);
            };
            const double busy = delta(0) + delta(1) + delta(3);
            const double total = busy + delta(2);
            load.perCore[i] = total > 0 ? std::clamp(busy / total, 0.0, 1.0) : 0.0;
        }
        load.overall = std::accumulate(load.perCore.begin(), load.perCore.end(), 0.0) /
                       static_cast<double>(count);
    }
    previous = std::move(current);
    return load;
}

CoreGroups CoreLayout::split(const std::vector<double>& perCore) const {
    if (!isSplit() || perCore.size() <= static_cast<std::size_t>(efficiency)) {
        return {perCore, {}};
    }
    return {{perCore.begin() + efficiency, perCore.end()},
            {perCore.begin(), perCore.begin() + efficiency}};
}

}  // namespace vostel
