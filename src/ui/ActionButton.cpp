#include "ui/ActionButton.h"

#include <QKeyEvent>
#include <QPainter>

#include "render/ElidedText.h"
#include "statusbar/PlainText.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr int symbolSize = 14;
constexpr int padding = 8;
constexpr int gap = 6;
constexpr double radius = 5;

}  // namespace

ActionButton::ActionButton(const QString& symbolName, const QString& name, bool withText,
                           QWidget* parent)
    : QAbstractButton(parent), symbol(symbolName), showsText(withText) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setName(name);
}

void ActionButton::setSymbol(const QString& name) {
    if (symbol != name) {
        symbol = name;
        update();
    }
}

void ActionButton::setName(const QString& name) {
    setAccessibleName(name);
    PlainText::setToolTip(*this, showsText ? QString() : name);
    if (showsText) {
        setText(name);
        setShortcut({});  // an "&" in it is one
        updateGeometry();
    }
}

QSize ActionButton::sizeHint() const {
    const QFontMetrics metrics(styled(font(), TextStyle::Small));
    if (!showsText) {
        return {symbolSize + 8, symbolSize + 8};
    }
    return {2 * padding + symbolSize + gap + metrics.horizontalAdvance(text()),
            metrics.height() + 12};
}

QSize ActionButton::minimumSizeHint() const {
    return {symbolSize + 8, sizeHint().height()};
}

void ActionButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled()) {
        painter.setOpacity(0.4);
    }
    const Theme& theme = Theme::current();
    const QRectF box = QRectF(rect()).adjusted(1, 1, -1, -1);
    painter.setPen(Qt::NoPen);
    if (isDown()) {
        painter.setBrush(theme.pressed);
        painter.drawRoundedRect(box, radius, radius);
    } else if (underMouse() && isEnabled()) {
        painter.setBrush(theme.hover);
        painter.drawRoundedRect(box, radius, radius);
    }
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(theme.accent, 2));
        painter.drawRoundedRect(box, radius, radius);
    }
    const QColor ink = isEnabled() && (underMouse() || showsText) ? theme.text : theme.secondary;
    if (!showsText) {
        drawSymbol(painter, rect(), symbol, symbolSize, ink);
        return;
    }
    drawSymbol(painter, QRectF(padding, 0, symbolSize, height()), symbol, symbolSize, ink);
    painter.setFont(styled(font(), TextStyle::Small));
    painter.setPen(ink);
    const QRect label = rect().adjusted(padding + symbolSize + gap, 0, -padding + 2, 0);
    painter.drawText(label, Qt::AlignLeft | Qt::AlignVCenter,
                     elided(QFontMetricsF(painter.font()), text(), Qt::ElideRight, label.width()));
}

void ActionButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        animateClick();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

}  // namespace vostel
