#pragma once

namespace vostel {

struct GPUStats {
    double utilization = 0;  // fraction 0 ... 1
    double renderer = 0;     // fraction 0 ... 1
    double tiler = 0;        // fraction 0 ... 1
    double inUseBytes = 0;

    bool operator==(const GPUStats&) const = default;
};

}  // namespace vostel
