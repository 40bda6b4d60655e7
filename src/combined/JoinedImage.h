#pragma once

#include <vector>

#include "combined/SegmentRange.h"
#include "statusbar/StatusImage.h"

namespace vostel {

struct SegmentImage {
    QString id;
    StatusImage image;  // not null, drawn for the context that the joined image is for
};

struct JoinedImage {
    StatusImage image;
    std::vector<SegmentRange> ranges;  // one for each segment, in their order
};

// The segments side by side, `spacing` points apart; at least one. Each stands on a whole point
// (and a whole device pixel), so that nothing of it is drawn twice. The result is a template when
// all of them are; one template among others is tinted for the context's appearance.
JoinedImage joined(const std::vector<SegmentImage>& segments, double spacing,
                   const ImageContext& context);

}  // namespace vostel
