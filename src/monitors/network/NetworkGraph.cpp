#include "monitors/network/NetworkGraph.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <QPainter>
#include <QPainterPath>

#include "render/MeterGraph.h"

namespace vostel {

namespace {

constexpr float areaAlpha = 0.3F;
constexpr float middleAlpha = 0.45F;

// From where to where one direction reaches in one column, in points; from == to draws nothing.
struct Reach {
    double from = 0;
    double to = 0;
};

struct Column {
    Reach down;
    Reach up;
};

std::span<const NetSample> newest(std::span<const NetSample> history) {
    return history.last(std::min(history.size(), NetworkGraph::capacity));
}

// What the samples are in `rect`. `pixel` is the size of a device pixel in points.
std::vector<Column> columnsOf(const QRectF& rect, std::span<const NetSample> history,
                              DisplayMode mode, double pixel) {
    const double scale = NetworkGraph::scaleOf(history, mode);
    const double middle = std::round(rect.height() / 2 / pixel) * pixel;
    std::vector<Column> columns;
    columns.reserve(history.size());
    for (const NetSample& sample : history) {
        const double down = std::clamp(sample.down / scale, 0.0, 1.0);
        const double up = std::clamp(sample.up / scale, 0.0, 1.0);
        Column column;
        if (mode == DisplayMode::mirrored) {
            const double room = std::min(middle, rect.height() - middle - pixel);
            column.down = {middle, middle - down * room};
            column.up = {middle + pixel, middle + pixel + up * room};
        } else if (mode == DisplayMode::opposing) {
            const double room = rect.height() - pixel;
            column.down = {0, down * room};
            column.up = {rect.height(), rect.height() - up * room};
        } else {
            const double room = rect.height() - pixel;
            const double top = down * room;
            // The gap stands only where there is something on both sides of it.
            const double gap = top >= pixel ? pixel : 0;
            column.down = {0, top};
            column.up = {top + gap, top + gap + up * room};
        }
        columns.push_back(column);
    }
    return columns;
}

void drawBars(QPainter& painter, const QRectF& rect, std::span<const Column> columns,
              const GraphConfig& config, double pixel) {
    // Edges on whole pixels; a gap as soon as a column has three of them.
    const double slot = rect.width() / static_cast<double>(NetworkGraph::capacity);
    const double gap = slot >= 3 * pixel - 1e-6 ? pixel : 0;
    const auto edge = [&](std::size_t back) {
        return rect.right() - std::round(slot * static_cast<double>(back) / pixel) * pixel;
    };
    const auto fill = [&](double left, double right, const Reach& reach, const QColor& color) {
        const double height = std::abs(reach.to - reach.from);
        if (height > pixel / 2) {  // what is fainter would be a coloured shade of the edge
            painter.fillRect(
                QRectF(left, rect.y() + std::min(reach.from, reach.to), right - left - gap, height),
                color);
        }
    };
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const double left = edge(columns.size() - i);
        const double right = edge(columns.size() - i - 1);
        fill(left, right, columns[i].down, config.down);
        fill(left, right, columns[i].up, config.up);
    }
}

// One direction as a curve over its area. The area's other side is `base`, a curve, too, in stacked
// mode.
void drawCurve(QPainter& painter, std::vector<QPointF> base, std::span<const QPointF> edge,
               const QColor& color, double lineWidth) {
    const QPainterPath line = MeterGraph::smoothPath(edge);
    QPainterPath area = line;
    std::reverse(base.begin(), base.end());
    area.connectPath(MeterGraph::smoothPath(base));
    area.closeSubpath();
    QColor fill = color;
    fill.setAlphaF(color.alphaF() * areaAlpha);
    painter.fillPath(area, fill);
    painter.strokePath(line, QPen(color, lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
}

void drawLines(QPainter& painter, const QRectF& rect, std::span<const Column> columns,
               const GraphConfig& config) {
    if (columns.size() < 2) {
        return;
    }
    const double slot = rect.width() / static_cast<double>(NetworkGraph::capacity - 1);
    std::vector<QPointF> points[4];
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const double x = rect.right() - slot * static_cast<double>(columns.size() - 1 - i);
        const double heights[] = {columns[i].down.from, columns[i].down.to, columns[i].up.from,
                                  columns[i].up.to};
        for (std::size_t k = 0; k < 4; ++k) {
            points[k].emplace_back(x, rect.y() + heights[k]);
        }
    }
    drawCurve(painter, points[0], points[1], config.down, config.lineWidth);
    drawCurve(painter, points[2], points[3], config.up, config.lineWidth);
}

}  // namespace

double NetworkGraph::scaleOf(std::span<const NetSample> history, DisplayMode mode) {
    double largest = smallestScale;
    for (const NetSample& sample : newest(history)) {
        largest = std::max(largest, mode == DisplayMode::mirrored ? std::max(sample.down, sample.up)
                                                                  : sample.down + sample.up);
    }
    return largest;
}

void NetworkGraph::draw(QPainter& painter, const QRectF& rect, std::span<const NetSample> history,
                        const GraphConfig& config) {
    if (!(rect.width() > 0) || !(rect.height() > 0)) {
        return;
    }
    const double scale = std::abs(painter.deviceTransform().m22());
    const double pixel = 1 / (scale > 0 ? scale : 1.0);
    const std::vector<Column> columns = columnsOf(rect, newest(history), config.mode, pixel);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(rect, Qt::IntersectClip);
    if (config.mode == DisplayMode::mirrored) {
        const double middle = std::round(rect.height() / 2 / pixel) * pixel;
        QColor color = config.down;
        color.setAlphaF(color.alphaF() * middleAlpha);
        painter.fillRect(QRectF(rect.x(), rect.y() + middle, rect.width(), pixel), color);
    }
    if (config.style == DisplayStyle::bars) {
        drawBars(painter, rect, columns, config, pixel);
    } else {
        drawLines(painter, rect, columns, config);
    }
    painter.restore();
}

}  // namespace vostel
