#include "ui/LineGraph.h"

#include <QPainter>

#include "core/SystemColors.h"
#include "render/MeterGraph.h"
#include "ui/Theme.h"

namespace vostel {

LineGraph::LineGraph(QWidget* parent) : Piece(QAccessible::Chart, parent) {}

void LineGraph::setHistory(std::vector<double> values) {
    assign(history, std::move(values));
}

void LineGraph::setColor(const QColor& value) {
    assign(color, value);
}

void LineGraph::setSmooth(bool on) {
    assign(smooth, on);
}

void LineGraph::setName(const QString& text) {
    setAccessibleName(text);
}

void LineGraph::setPanelHeight(int pixels) {
    if (assign(panelHeight, pixels)) {
        updateGeometry();
    }
}

QSize LineGraph::sizeHint() const {
    return {200, panelHeight};
}

void LineGraph::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(0, height());
    painter.scale(1, -1);
    const Theme& theme = Theme::current();
    QPainterPath panel;
    panel.addRoundedRect(rect(), 4, 4);
    painter.fillPath(panel, theme.panel);
    painter.setClipPath(panel);
    // Half the line's width inside, so that 0 and 1 show the whole line.
    MeterGraph::drawLineGraph(painter, QRectF(rect()).adjusted(0, 1, 0, -1), history,
                              color.isValid() ? color : systemGreen(theme.appearance), smooth);
}

}  // namespace vostel
