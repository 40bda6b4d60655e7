#include "ui/HeaderRow.h"

#include <QPainter>

#include "render/ElidedText.h"
#include "ui/FigureText.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr int gapBelow = 4;

}  // namespace

HeaderRow::HeaderRow(const QString& text, QWidget* parent)
    : Piece(QAccessible::Heading, parent), title(text) {
    describe();
}

void HeaderRow::setTitle(const QString& text) {
    if (assign(title, text)) {
        describe();
    }
}

void HeaderRow::setValue(const QString& text) {
    if (assign(value, text)) {
        describe();
    }
}

void HeaderRow::setValueColor(const QColor& color) {
    assign(valueColor, color);
}

void HeaderRow::setDetail(const QString& text) {
    const bool had = !detail.isEmpty();
    if (assign(detail, text)) {
        describe();
        if (had == detail.isEmpty()) {
            updateGeometry();
        }
    }
}

QSize HeaderRow::sizeHint() const {
    const int main = QFontMetrics(styled(font(), TextStyle::Value)).height() + 2;
    const int sub =
        detail.isEmpty() ? 0 : QFontMetrics(styled(font(), TextStyle::Small)).height() + 2;
    return {200, main + sub + gapBelow};
}

void HeaderRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    const QFont small = styled(font(), TextStyle::Small);
    QRectF row = QRectF(rect()).adjusted(0, 0, 0, -gapBelow);
    if (!detail.isEmpty()) {
        const QRectF line = row.adjusted(0, row.height() - QFontMetrics(small).height(), 0, 0);
        painter.setPen(theme.secondary);
        FigureText::draw(painter, line, small, detail, Qt::AlignLeft);
        row.setBottom(line.top());
    }
    const QFont big = styled(font(), TextStyle::Value);
    const QFont titleFont = styled(font(), TextStyle::Title);
    painter.setPen(valueColor.isValid() ? theme.readable(valueColor) : theme.text);
    const double valueWidth = std::min(FigureText::width(big, value), row.width() * 0.8);
    FigureText::draw(painter, row.adjusted(row.width() - valueWidth, 0, 0, 0), big, value);
    // Title and value stand on one base line.
    const QFontMetricsF bigMetrics(big);
    const double baseline = row.center().y() + (bigMetrics.ascent() - bigMetrics.descent()) / 2;
    painter.setPen(theme.text);
    painter.setFont(titleFont);
    painter.drawText(
        QPointF(row.left(), baseline),
        elided(QFontMetricsF(titleFont), title, Qt::ElideRight, row.width() - valueWidth - 8));
}

void HeaderRow::describe() {
    setAccessibleName(title + u' ' + value);
    setAccessibleDescription(detail);
}

}  // namespace vostel
