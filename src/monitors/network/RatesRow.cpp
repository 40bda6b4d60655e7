#include "monitors/network/RatesRow.h"

#include <QPainter>
#include <QPainterPath>

#include "ui/FigureText.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr double arrowSize = 9;
constexpr double arrowRoom = 15;
constexpr int gapBelow = 5;

}  // namespace

void drawTriangle(QPainter& painter, const QRectF& box, bool up, const QColor& color) {
    QPainterPath path;
    path.moveTo(up ? box.bottomLeft() : box.topLeft());
    path.lineTo(up ? box.bottomRight() : box.topRight());
    path.lineTo(box.center().x(), up ? box.top() : box.bottom());
    path.closeSubpath();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path, color);
    painter.restore();
}

RatesRow::RatesRow(QWidget* parent) : Piece(QAccessible::StaticText, parent) {}

void RatesRow::setDown(const Direction& direction) {
    if (assign(down, direction)) {
        describe();
    }
}

void RatesRow::setUp(const Direction& direction) {
    if (assign(up, direction)) {
        describe();
    }
}

void RatesRow::describe() {
    setAccessibleName(QStringLiteral("Download %1, peak %2; upload %3, peak %4")
                          .arg(down.rate, down.peak, up.rate, up.peak));
}

QSize RatesRow::sizeHint() const {
    return {200, QFontMetrics(styled(font(), TextStyle::Value)).height() +
                     QFontMetrics(styled(font(), TextStyle::Small)).height() + gapBelow};
}

void RatesRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    const QFont big = styled(font(), TextStyle::Value);
    const QFont small = styled(font(), TextStyle::Small);
    const double bigHeight = QFontMetricsF(big).height();
    const double half = width() / 2.0;
    for (const bool isUp : {false, true}) {
        const Direction& direction = isUp ? up : down;
        const QRectF cell(isUp ? half : 0, 0, half, height() - gapBelow);
        const QColor color = theme.readable(direction.color);
        drawTriangle(painter,
                     QRectF(cell.left(), (bigHeight - arrowSize * 0.85) / 2 + 1, arrowSize,
                            arrowSize * 0.85),
                     isUp, color);
        const QRectF text = cell.adjusted(arrowRoom, 0, 0, 0);
        painter.setPen(color);
        FigureText::draw(painter, QRectF(text.left(), 0, text.width(), bigHeight), big,
                         direction.rate, Qt::AlignLeft);
        painter.setPen(theme.secondary);
        FigureText::draw(painter,
                         QRectF(text.left(), bigHeight, text.width(), cell.height() - bigHeight),
                         small, QStringLiteral("Peak ") + direction.peak, Qt::AlignLeft);
    }
}

}  // namespace vostel
