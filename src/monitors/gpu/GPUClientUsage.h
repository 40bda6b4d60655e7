#pragma once

#include <string>

namespace vostel {

struct GPUClientUsage {
    double gpuTimeNS = 0;  // accumulated GPU time, nanoseconds
    std::string name;
};

}  // namespace vostel
