#include "combined/SegmentRange.h"

#include <algorithm>
#include <cmath>

namespace vostel {

double imageOffset(double buttonWidth, double imageWidth) {
    return std::round((buttonWidth - imageWidth) / 2);
}

const SegmentRange* segmentAt(const std::vector<SegmentRange>& ranges, double x) {
    if (ranges.empty()) {
        return nullptr;
    }
    const auto hit = std::find_if(ranges.begin(), ranges.end(), [x](const SegmentRange& range) {
        return range.minX <= x && x < range.maxX;
    });
    if (hit != ranges.end()) {
        return &*hit;
    }
    return x < ranges.front().minX ? &ranges.front() : &ranges.back();
}

}  // namespace vostel
