#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/GPUSource.h"

namespace vostel {

// How much of the time a GPU was powered, from the residency of its performance states.
class GPUReport {
  public:
    // The busy fraction, 0 ... 1, of accelerator `id` since the previous call; the others are only
    // remembered, so that a switch to them has a value at once. Empty on the first call, and when
    // the accelerator or its channel "GPUPH" is missing, now or in the previous call.
    std::optional<double> sample(std::span<const GPUAccelerator> accelerators,
                                 const std::string& id);

  private:
    std::map<std::string, std::vector<GPUResidencyChannel>> previous;
};

}  // namespace vostel
