#include "render/MeterGraph.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <QPainter>

namespace vostel {

namespace {

constexpr double radiusCap = 1.5;       // points
constexpr double panelRadiusCap = 2.5;  // points
constexpr double smallestFill = 0.5;    // points
constexpr double areaAlpha = 0.3;

double fraction(double value) {
    return value > 0 ? std::min(value, 1.0) : 0.0;
}

void fillRounded(QPainter& painter, const QRectF& rect) {
    const double radius = std::min({rect.width() / 2, rect.height() / 2, radiusCap});
    painter.drawRoundedRect(rect, radius, radius);
}

// The painter's brush is set once per colour. Each bar is filled by itself: the rasteriser's cost
// grows with the square of the shapes on a scan line, so one path of 16 bars takes three times as
// long.
class BarPainter {
  public:
    explicit BarPainter(QPainter& target) : painter(target) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
    }
    ~BarPainter() { painter.restore(); }
    BarPainter(const BarPainter&) = delete;
    BarPainter& operator=(const BarPainter&) = delete;

    void draw(std::span<const QRectF> bars, std::span<const double> values, const QColor& color,
              const QColor& trackColor) {
        painter.setBrush(trackColor);
        for (const QRectF& bar : bars) {
            fillRounded(painter, bar);
        }
        painter.setBrush(color);
        for (std::size_t i = 0; i < bars.size(); ++i) {
            const double height = fraction(values[i]) * bars[i].height();
            if (height > smallestFill) {
                fillRounded(painter, QRectF(bars[i].x(), bars[i].y(), bars[i].width(), height));
            }
        }
    }

  private:
    QPainter& painter;
};

double devicePixelsPerPoint(const QPainter& painter) {
    const double scale = std::abs(painter.deviceTransform().m11());
    return scale > 0 ? scale : 1.0;
}

double mean(std::span<const double> values) {
    double sum = 0;
    for (const double value : values) {
        sum += fraction(value);
    }
    return values.empty() ? 0 : sum / static_cast<double>(values.size());
}

// Slots too narrow for a gap: columns that touch, each at least one device pixel wide.
void drawColumns(QPainter& painter, const QRectF& rect, std::span<const double> values,
                 double scale, const QColor& color, const QColor& trackColor) {
    const auto pixels = static_cast<std::size_t>(std::max(1.0, std::floor(rect.width() * scale)));
    const std::size_t columns = std::min(values.size(), pixels);
    const auto edge = [&](std::size_t column) {
        const double x =
            rect.width() * scale * static_cast<double>(column) / static_cast<double>(columns);
        return rect.x() + std::round(x) / scale;
    };
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect, trackColor);
    for (std::size_t i = 0; i < columns; ++i) {
        const std::size_t first = values.size() * i / columns;
        const std::size_t last = values.size() * (i + 1) / columns;
        const double height = mean(values.subspan(first, last - first)) * rect.height();
        if (height > smallestFill) {
            painter.fillRect(QRectF(edge(i), rect.y(), edge(i + 1) - edge(i), height), color);
        }
    }
    painter.restore();
}

}  // namespace

QRectF MeterGraph::snapped(const QPainter& painter, const QRectF& rect) {
    const QTransform& toDevice = painter.deviceTransform();
    if (toDevice.type() > QTransform::TxScale) {
        return rect;
    }
    const QRectF device = toDevice.mapRect(rect);
    double left = std::round(device.left());
    // Halves go up on the screen: a bar of 27.5 pixels has an image of 28 rows, and fills it.
    double top = std::ceil(device.top() - 0.5);
    double right = std::round(device.right());
    double bottom = std::ceil(device.bottom() - 0.5);
    if (device.width() > 0) {
        right = std::max(right, left + 1);
    }
    if (device.height() > 0) {
        bottom = std::max(bottom, top + 1);
    }
    return toDevice.inverted().mapRect(QRectF(QPointF(left, top), QPointF(right, bottom)));
}

void MeterGraph::drawSingleBar(QPainter& painter, const QRectF& rect, double value,
                               const QColor& color, const QColor& trackColor) {
    if (!(rect.width() > 0) || !(rect.height() > 0)) {
        return;
    }
    const QRectF bar =
        snapped(painter, QRectF(rect.x(), rect.y(), std::max(rect.width(), 1.0), rect.height()));
    BarPainter(painter).draw({&bar, 1}, {&value, 1}, color, trackColor);
}

void MeterGraph::drawNoValue(QPainter& painter, const QRectF& rect, const QColor& color,
                             const QColor& trackColor) {
    drawSingleBar(painter, rect, 0, color, trackColor);
    const double width = std::min(4.0, rect.width() / 2);
    constexpr double height = 1;
    painter.fillRect(snapped(painter, QRectF(rect.center().x() - width / 2,
                                             rect.center().y() - height / 2, width, height)),
                     color);
}

void MeterGraph::drawBarRow(QPainter& painter, const QRectF& rect, std::span<const double> values,
                            double spacing, const QColor& color, const QColor& trackColor) {
    if (values.empty() || !(rect.width() > 0) || !(rect.height() > 0)) {
        return;
    }
    const QRectF area = snapped(painter, rect);
    const double scale = devicePixelsPerPoint(painter);
    const double slot = rect.width() / static_cast<double>(values.size());
    if (slot * scale < 2) {
        drawColumns(painter, area, values, scale, color, trackColor);
        return;
    }
    // All bars get the same whole number of pixels, and a gap of at least one stays where there is
    // one to begin with.
    // Halves go down, as those of a bar's place go up: the last bar ends where it should.
    double pixels = std::ceil(std::max(slot - spacing, 1.0) * scale - 0.5);
    if (spacing > 0) {
        pixels = std::min(pixels, std::floor(slot * scale) - 1);
    }
    const double width = std::max(pixels, 1.0) / scale;
    std::vector<QRectF> bars;
    bars.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double x = std::round(slot * static_cast<double>(i) * scale) / scale;
        bars.emplace_back(area.x() + x, area.y(), width, area.height());
    }
    BarPainter(painter).draw(bars, values, color, trackColor);
}

void MeterGraph::drawLineGraph(QPainter& painter, const QRectF& rect,
                               std::span<const double> history, const QColor& color, bool smooth,
                               double lineWidth) {
    if (history.size() < 2 || !(rect.width() > 0) || !(rect.height() > 0)) {
        return;
    }
    std::vector<QPointF> points;
    points.reserve(history.size());
    const auto last = static_cast<double>(history.size() - 1);
    for (std::size_t i = 0; i < history.size(); ++i) {
        points.emplace_back(rect.x() + rect.width() * static_cast<double>(i) / last,
                            rect.y() + rect.height() * fraction(history[i]));
    }
    const QPainterPath line = smooth ? smoothPath(points) : polyline(points);
    QPainterPath area = line;
    area.lineTo(points.back().x(), rect.y());
    area.lineTo(points.front().x(), rect.y());
    area.closeSubpath();

    QColor areaColor = color;
    areaColor.setAlphaF(static_cast<float>(areaAlpha));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(area, areaColor);
    painter.strokePath(line, QPen(color, lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    painter.restore();
}

QPainterPath MeterGraph::panelPath(const QRectF& rect) {
    const double radius = std::min({rect.width() / 2, rect.height() / 2, panelRadiusCap});
    QPainterPath panel;
    panel.addRoundedRect(rect, radius, radius);
    return panel;
}

void MeterGraph::drawGraphPanel(QPainter& painter, const QRectF& rect,
                                std::span<const double> history, const QColor& color,
                                const QColor& trackColor, double lineWidth) {
    if (!(rect.width() > 0) || !(rect.height() > 0)) {
        return;
    }
    const QRectF area = snapped(painter, rect);
    const QPainterPath panel = panelPath(area);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(panel, trackColor);
    painter.setClipPath(panel, Qt::IntersectClip);
    drawLineGraph(painter, area, history, color, true, lineWidth);
    painter.restore();
}

QPainterPath MeterGraph::polyline(std::span<const QPointF> points) {
    QPainterPath path;
    if (points.empty()) {
        return path;
    }
    path.moveTo(points.front());
    for (const QPointF& point : points.subspan(1)) {
        path.lineTo(point);
    }
    return path;
}

QPainterPath MeterGraph::smoothPath(std::span<const QPointF> points) {
    QPainterPath path;
    if (points.size() < 2) {
        return path;
    }
    path.moveTo(points[0]);
    for (std::size_t i = 1; i < points.size(); ++i) {
        // The neighbour missing at either end is the end point itself, so the curve does not
        // overshoot.
        const QPointF& before = points[i >= 2 ? i - 2 : 0];
        const QPointF& after = points[std::min(i + 1, points.size() - 1)];
        path.cubicTo(points[i - 1] + (points[i] - before) / 6,
                     points[i] - (after - points[i - 1]) / 6, points[i]);
    }
    return path;
}

}  // namespace vostel
