#pragma once

#include <vector>

namespace vostel {

// Load of the processors between two readings; fractions 0 ... 1.
struct CPULoad {
    std::vector<double> perCore;  // one per logical processor, in the source's order
    double overall = 0;           // arithmetic mean of perCore
};

}  // namespace vostel
