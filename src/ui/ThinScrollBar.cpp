#include "ui/ThinScrollBar.h"

#include <QPainter>

#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr int barWidth = 8;
constexpr double thumbWidth = 4;
constexpr double shortestThumb = 24;

}  // namespace

ThinScrollBar::ThinScrollBar(QWidget* parent) : QScrollBar(Qt::Vertical, parent) {
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    setAccessibleName(QStringLiteral("Scroll"));
}

QSize ThinScrollBar::sizeHint() const {
    return {barWidth, 40};
}

void ThinScrollBar::paintEvent(QPaintEvent*) {
    const double range = maximum() - minimum() + pageStep();
    if (range <= 0) {
        return;
    }
    const double length = std::max(shortestThumb, height() * pageStep() / range);
    const double travel = std::max(1, maximum() - minimum());
    const double top = (height() - length) * (value() - minimum()) / travel;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::current().secondary);
    painter.drawRoundedRect(QRectF((width() - thumbWidth) / 2, top + 2, thumbWidth, length - 4),
                            thumbWidth / 2, thumbWidth / 2);
}

}  // namespace vostel
