#pragma once

#include <span>

#include <QColor>
#include <QRectF>

#include "monitors/network/DisplayMode.h"
#include "monitors/network/NetSample.h"

class QPainter;

namespace vostel {

struct GraphConfig {
    DisplayMode mode = DisplayMode::stacked;
    DisplayStyle style = DisplayStyle::line;
    QColor down;
    QColor up;
    double lineWidth = 1;  // points

    bool operator==(const GraphConfig&) const = default;
};

// The throughput graph. Coordinates have their origin at the bottom left, y upward, as MenuBarImage
// hands them out; a widget flips its painter first. Sixty samples fill the width; the newest stands
// at the right edge, so a shorter history leaves the left empty and nothing changes its speed.
//
// The directions are told apart by their place, not by their colour alone: upload is always above
// download, and a gap of at least one device pixel, or the middle line, lies between them.
class NetworkGraph {
  public:
    static constexpr std::size_t capacity = 60;  // samples
    // The full height is never less than this, so that the murmur of an idle network stays small.
    static constexpr double smallestScale = 16 * 1024;  // bytes per second

    // The rate that the full height stands for (the full half height when mirrored): the largest of
    // the history, in the modes that draw one direction beside the other in one column their sum.
    static double scaleOf(std::span<const NetSample> history, DisplayMode mode);

    // The newest `capacity` samples of the history, over all of `rect`.
    static void draw(QPainter& painter, const QRectF& rect, std::span<const NetSample> history,
                     const GraphConfig& config);
};

}  // namespace vostel
