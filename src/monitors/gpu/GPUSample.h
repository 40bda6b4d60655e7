#pragma once

#include <map>
#include <string>

#include "monitors/gpu/GPUClientUsage.h"
#include "monitors/gpu/GPUStats.h"

namespace vostel {

struct GPUSample {
    GPUStats stats;
    std::map<int, GPUClientUsage> apps;  // by process id
    std::string accelerator;             // GPUAccelerator::id of the one that `stats` is of
};

}  // namespace vostel
