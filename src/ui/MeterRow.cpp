#include "ui/MeterRow.h"

#include <algorithm>
#include <cmath>

#include <QPainter>

#include "core/SystemColors.h"
#include "render/MeterGraph.h"
#include "ui/FigureText.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr double labelShare = 0.3;
constexpr double valueShare = 0.25;
constexpr double meterHeight = 4;
constexpr double gap = 8;

}  // namespace

MeterRow::MeterRow(const QString& text, QWidget* parent)
    : Piece(QAccessible::ProgressBar, parent), label(text) {
    describe();
}

void MeterRow::setLabel(const QString& text) {
    if (assign(label, text)) {
        describe();
    }
}

void MeterRow::setValue(const QString& text, double share) {
    const bool moved = assign(fraction, std::isfinite(share) ? std::clamp(share, 0.0, 1.0) : 0.0);
    if (assign(value, text) || moved) {
        describe();
    }
}

void MeterRow::setColor(const QColor& meterColor) {
    assign(color, meterColor);
}

QSize MeterRow::sizeHint() const {
    return {200, std::max(QFontMetrics(font()).height() + 4, 22)};
}

void MeterRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    const QRectF row = rect();
    const double labelWidth = std::round(row.width() * labelShare);
    const double valueWidth = std::max(std::round(row.width() * valueShare),
                                       std::min(FigureText::width(font(), value), row.width() / 2));
    painter.setPen(theme.secondary);
    FigureText::draw(painter, QRectF(0, 0, labelWidth, row.height()), font(), label, Qt::AlignLeft);
    painter.setPen(theme.text);
    FigureText::draw(painter, row.adjusted(row.width() - valueWidth, 0, 0, 0), font(), value);

    const QRectF meter(labelWidth + gap, (row.height() - meterHeight) / 2,
                       row.width() - labelWidth - valueWidth - 2 * gap, meterHeight);
    if (meter.width() < 10) {
        return;
    }
    // Lies on its side: the bar's height is the row's x.
    painter.setTransform(QTransform(0, 1, 1, 0, 0, 0), true);
    MeterGraph::drawSingleBar(
        painter, QRectF(std::round(meter.y()), meter.x(), meter.height(), meter.width()), fraction,
        color.isValid() ? color : systemGreen(theme.appearance), theme.track);
}

void MeterRow::describe() {
    setAccessibleName(label + u' ' + value);
}

}  // namespace vostel
