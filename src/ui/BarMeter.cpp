#include "ui/BarMeter.h"

#include <algorithm>
#include <cmath>
#include <span>

#include <QPainter>

#include "core/SystemColors.h"
#include "render/MeterGraph.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr int barsPerRow = 64;
constexpr std::size_t manyBars = 32;  // in a row; more have narrow gaps, and without room none
constexpr int mostRows = 8;
constexpr int singleHeight = 40;
constexpr int stackedHeight = 22;
constexpr int rowGap = 4;

}  // namespace

BarMeter::BarMeter(QWidget* parent) : Piece(QAccessible::ProgressBar, parent) {}

void BarMeter::setValues(std::vector<double> fractions) {
    const int rows = rowCount();
    if (!assign(values, std::move(fractions))) {
        return;
    }
    if (rows != rowCount()) {
        updateGeometry();
    }
    if (QAccessible::isActive() && !values.empty()) {
        const double highest = std::clamp(*std::max_element(values.begin(), values.end()), 0., 1.);
        setAccessibleDescription(
            tr("%n bar(s), highest %1%", nullptr, static_cast<int>(values.size()))
                .arg(std::lround(highest * 100)));
    }
}

void BarMeter::setColor(const QColor& value) {
    assign(color, value);
}

void BarMeter::setSpacing(double points) {
    assign(spacing, points);
}

void BarMeter::setSlots(std::size_t count) {
    assign(slotCount, count);
}

void BarMeter::setName(const QString& text) {
    if (assign(name, text)) {
        setAccessibleName(name);
    }
}

int BarMeter::rowCount() const {
    const int rows = (static_cast<int>(values.size()) + barsPerRow - 1) / barsPerRow;
    return std::clamp(rows, 1, mostRows);
}

QSize BarMeter::sizeHint() const {
    const int rows = rowCount();
    return {200, rows == 1 ? singleHeight : rows * (stackedHeight + rowGap) - rowGap};
}

void BarMeter::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.translate(0, height());
    painter.scale(1, -1);
    const Theme& theme = Theme::current();
    const QColor fill = color.isValid() ? color : systemGreen(theme.appearance);
    const auto rows = static_cast<std::size_t>(rowCount());
    const std::size_t perRow = (values.size() + rows - 1) / rows;
    const double rowHeight =
        (height() - rowGap * (static_cast<double>(rows) - 1)) / static_cast<double>(rows);
    double gap = spacing;
    if (2 * static_cast<int>(perRow) > width()) {
        gap = 0;
    } else if (perRow > manyBars) {
        gap = std::min(spacing, 1.0);
    }
    for (std::size_t row = 0; row * perRow < values.size(); ++row) {
        const auto part = std::span<const double>(values).subspan(
            row * perRow, std::min(perRow, values.size() - row * perRow));
        // The spacing right of the last bar lies outside, so that the row fills the width; a
        // shorter last row keeps the slots of the others.
        const std::size_t places = rows == 1 ? std::max(perRow, slotCount) : perRow;
        const double share = static_cast<double>(part.size()) / static_cast<double>(places);
        const double y = height() - (static_cast<double>(row) + 1) * rowHeight -
                         static_cast<double>(row) * rowGap;
        MeterGraph::drawBarRow(painter, QRectF(0, y, (width() + gap) * share, rowHeight), part, gap,
                               fill, theme.track);
    }
}

}  // namespace vostel
