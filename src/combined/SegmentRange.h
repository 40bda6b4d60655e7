#pragma once

#include <vector>

#include <QString>

namespace vostel {

// Where one segment stands in the joined image: points from its left edge, maxX excluded.
struct SegmentRange {
    QString id;
    double minX = 0;
    double maxX = 0;

    bool operator==(const SegmentRange&) const = default;
};

// The left edge of an image that stands in the middle of a button, points from the button's own.
double imageOffset(double buttonWidth, double imageWidth);

// The segment that a click at `x` (points from the image's left edge) is meant for: the one under
// it; left of the first that one; any other miss the last one. Null when there are none.
const SegmentRange* segmentAt(const std::vector<SegmentRange>& ranges, double x);

}  // namespace vostel
