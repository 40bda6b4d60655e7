#include "ui/SectionTitle.h"

#include <QPainter>

#include "ui/FigureText.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr int gapAbove = 8;
constexpr int gapBelow = 1;
constexpr double symbolSize = 13;

}  // namespace

SectionTitle::SectionTitle(const QString& title, QWidget* parent)
    : Piece(QAccessible::Heading, parent) {
    setText(title);
}

void SectionTitle::setText(const QString& title) {
    if (assign(text, title)) {
        setAccessibleName(text);
    }
}

void SectionTitle::setSymbol(const QString& name) {
    assign(symbol, name);
}

void SectionTitle::setNote(const QString& value) {
    if (assign(note, value)) {
        setAccessibleDescription(note);
    }
}

void SectionTitle::setCapitals(bool on) {
    assign(capitals, on);
}

QSize SectionTitle::sizeHint() const {
    return {200, gapAbove + gapBelow + QFontMetrics(styled(font(), TextStyle::Section)).height()};
}

void SectionTitle::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QFont titleFont = styled(font(), TextStyle::Section);
    QRectF row = QRectF(rect()).adjusted(0, gapAbove, 0, -gapBelow);
    const QColor ink = Theme::current().secondary;
    painter.setPen(ink);
    if (!symbol.isEmpty()) {
        drawSymbol(painter, QRectF(0, row.top(), symbolSize, row.height()), symbol, symbolSize,
                   ink);
        row.setLeft(symbolSize + 5);
    }
    if (!note.isEmpty()) {
        const QFont noteFont = styled(font(), TextStyle::Small);
        const double width = std::min(FigureText::width(noteFont, note), row.width() / 2);
        FigureText::draw(painter, row.adjusted(row.width() - width, 0, 0, 0), noteFont, note);
        row.setRight(row.right() - width - 8);
    }
    FigureText::draw(painter, row, titleFont, capitals ? text.toUpper() : text, Qt::AlignLeft);
}

}  // namespace vostel
