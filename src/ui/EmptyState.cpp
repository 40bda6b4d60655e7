#include "ui/EmptyState.h"

#include <QPainter>

#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr int margin = 14;
constexpr int symbolSize = 28;
constexpr int gap = 6;
constexpr int textFlags = Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap;

int textHeight(const QFont& font, const QString& text, int width) {
    return text.isEmpty()
               ? 0
               : QFontMetrics(font)
                     .boundingRect(QRect(0, 0, std::max(40, width), 4000), textFlags, text)
                     .height();
}

}  // namespace

EmptyState::EmptyState(QWidget* parent) : Piece(QAccessible::StaticText, parent) {
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void EmptyState::setContent(const QString& symbolName, const QString& headline,
                            const QString& text) {
    bool changed = assign(symbol, symbolName);
    changed = assign(title, headline) || changed;
    changed = assign(detail, text) || changed;
    if (changed) {
        setAccessibleName(title);
        setAccessibleDescription(detail);
        updateGeometry();
    }
}

QSize EmptyState::sizeHint() const {
    return {200, heightForWidth(width())};
}

int EmptyState::heightForWidth(int width) const {
    return 2 * margin + symbolSize + gap + textHeight(font(), title, width) + 2 +
           textHeight(styled(font(), TextStyle::Small), detail, width);
}

void EmptyState::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    drawSymbol(painter, QRectF(0, margin, width(), symbolSize), symbol, symbolSize,
               theme.secondary);
    QRect text = rect().adjusted(0, margin + symbolSize + gap, 0, 0);
    painter.setPen(theme.text);
    painter.setFont(font());
    painter.drawText(text, textFlags, title);
    text.setTop(text.top() + textHeight(font(), title, width()) + 2);
    painter.setPen(theme.secondary);
    painter.setFont(styled(font(), TextStyle::Small));
    painter.drawText(text, textFlags, detail);
}

}  // namespace vostel
