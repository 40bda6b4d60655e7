#pragma once

#include <span>

#include <QColor>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

class QPainter;

namespace vostel {

// The drawing primitives of bar images and popovers. Coordinates have their origin at the bottom
// left, y upward, as MenuBarImage hands them out; a widget flips its painter first. Values are
// fractions 0 ... 1; anything outside is clamped, NaN reads as 0. Nothing is kept between calls.
//
// Edges of bars and tracks are moved to the nearest device pixel, so that the bars of a row are
// equally sharp at fractional scales; the height of a value is not, because it is the measurement.
class MeterGraph {
  public:
    // A rounded bar: the track over the whole rectangle, the value from its bottom. A value of
    // half a point or less shows the bare track.
    static void drawSingleBar(QPainter& painter, const QRectF& rect, double value,
                              const QColor& color, const QColor& trackColor);

    // The same bar where there is no value: the track with a dash across its middle.
    static void drawNoValue(QPainter& painter, const QRectF& rect, const QColor& color,
                            const QColor& trackColor);

    // One bar per value from the left. A slot is width / n; a bar is as wide as its slot without
    // `spacing` (points, which sit at the right of each bar), at least 1 point. Slots narrower than
    // two device pixels have no gaps; values that share one device pixel are drawn as their mean.
    static void drawBarRow(QPainter& painter, const QRectF& rect, std::span<const double> values,
                           double spacing, const QColor& color, const QColor& trackColor);

    // The history, oldest at the left edge, newest at the right: a line over its area in `color` at
    // alpha 0.3. Nothing with fewer than two values.
    static void drawLineGraph(QPainter& painter, const QRectF& rect,
                              std::span<const double> history, const QColor& color, bool smooth,
                              double lineWidth = 1.5);

    // A rounded panel (radius at most 2.5) in the track colour with the smoothed line graph in it.
    static void drawGraphPanel(QPainter& painter, const QRectF& rect,
                               std::span<const double> history, const QColor& color,
                               const QColor& trackColor, double lineWidth = 1.0);

    // Cubic curve through every point, tension one sixth; empty with fewer than two points.
    static QPainterPath smoothPath(std::span<const QPointF> points);
    // Straight lines from point to point; empty without points.
    static QPainterPath polyline(std::span<const QPointF> points);

    // The rounded rectangle of `drawGraphPanel`.
    static QPainterPath panelPath(const QRectF& rect);

    // `rect` with its edges on whole device pixels of `painter`, at least one pixel in each
    // direction that was not empty. Unchanged under a rotation.
    static QRectF snapped(const QPainter& painter, const QRectF& rect);
};

}  // namespace vostel
