#include "ui/NoteLine.h"

#include <QPainter>

#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr double symbolSize = 13;
constexpr int symbolRoom = 19;
constexpr int textFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;

}  // namespace

NoteLine::NoteLine(QWidget* parent) : Piece(QAccessible::StaticText, parent) {
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setVisible(false);
}

void NoteLine::setNote(const QString& note, Kind value, const QString& symbolName) {
    const QString shown = symbolName.isEmpty() && value == Kind::Warning
                              ? QStringLiteral("exclamationmark.triangle.fill")
                              : symbolName;
    bool changed = assign(text, note);
    changed = assign(kind, value) || changed;
    changed = assign(symbol, shown) || changed;
    if (changed) {
        setAccessibleName(text);
        setVisible(!text.isEmpty());
        updateGeometry();
    }
}

QSize NoteLine::sizeHint() const {
    return {200, heightForWidth(width())};
}

int NoteLine::heightForWidth(int width) const {
    const QFontMetrics metrics(styled(font(), TextStyle::Small));
    return metrics
               .boundingRect(QRect(0, 0, std::max(40, width - textLeft()), 4000), textFlags, text)
               .height() +
           2;
}

void NoteLine::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    const QFont small = styled(font(), TextStyle::Small);
    const QColor color = kind == Kind::Warning ? theme.warning : theme.secondary;
    if (!symbol.isEmpty()) {
        drawSymbol(painter, QRectF(0, 1, symbolSize, QFontMetrics(small).height()), symbol,
                   symbolSize, color);
    }
    painter.setFont(small);
    painter.setPen(color);
    painter.drawText(rect().adjusted(textLeft(), 1, 0, 0), textFlags, text);
}

int NoteLine::textLeft() const {
    return symbol.isEmpty() ? 0 : symbolRoom;
}

}  // namespace vostel
