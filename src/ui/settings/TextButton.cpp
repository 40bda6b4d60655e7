#include "ui/settings/TextButton.h"

#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

TextButton::TextButton(const QString& text, QWidget* parent) : PaintedButton(text, parent) {
    setText(text);
}

QSize TextButton::sizeHint() const {
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(text()) + 28, metrics.height() + 12};
}

void TextButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::current();
    const QColor fill = isDown()                      ? theme.pressed
                        : underMouse() && isEnabled() ? theme.hover
                                                      : theme.panel;
    const QRectF box = QRectF(rect()).adjusted(1, 1, -1, -1);
    SettingsLook::drawBox(painter, box, fill, theme.border);
    if (SettingsLook::showsRing(*this)) {
        SettingsLook::drawRing(painter, box, SettingsLook::radius - 1);
    }
    painter.setPen(isEnabled() ? theme.text : theme.secondary);
    painter.drawText(rect(), Qt::AlignCenter, text());
}

}  // namespace vostel
