#pragma once

#include <optional>
#include <span>

#include "monitors/gpu/GPUSample.h"
#include "platform/GPUSource.h"

namespace vostel {

class GPUMonitor {
  public:
    // The figures of the busiest accelerator (the first of equals) and the GPU time of the clients
    // of all of them, also of those without statistics. Clients are visited three levels deep.
    // Every fraction is within 0 ... 1, every time and size finite and not negative, whatever the
    // source says. Empty when no accelerator has statistics.
    static std::optional<GPUSample> sampleIORegistry(std::span<const GPUAccelerator> accelerators);
};

}  // namespace vostel
