#include "monitors/gpu/GPUState.h"

#include <algorithm>

namespace vostel {

GPUState gpuState(std::span<const GPUAccelerator> accelerators) {
    if (accelerators.empty()) {
        return GPUState::absent;
    }
    if (std::ranges::all_of(accelerators, &GPUAccelerator::asleep)) {
        return GPUState::asleep;
    }
    const auto tells = [](const GPUAccelerator& accelerator) {
        return !accelerator.asleep && accelerator.statistics.has_value();
    };
    if (std::ranges::any_of(accelerators, tells)) {
        return GPUState::awake;
    }
    return std::ranges::any_of(accelerators, &GPUAccelerator::stale) ? GPUState::silent
                                                                     : GPUState::unknown;
}

}  // namespace vostel
