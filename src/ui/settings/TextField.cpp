#include "ui/settings/TextField.h"

#include "statusbar/PlainText.h"
#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

namespace {

constexpr int padding = 6;
constexpr int symbolRoom = 20;

}  // namespace

TextField::TextField(const QString& name, QWidget* parent) : QLineEdit(parent) {
    setAccessibleName(name);
    setFrame(false);
    setAttribute(Qt::WA_MacShowFocusRect, false);
    setTextMargins(padding, 0, padding, 0);
    setAutoFillBackground(false);
    QPalette clear;  // the box is painted here
    clear.setColor(QPalette::Base, Qt::transparent);
    setPalette(clear);
}

void TextField::setComplaint(const QString& complaint) {
    marked = !complaint.isEmpty();
    PlainText::setToolTip(*this, complaint);
    setAccessibleDescription(complaint);
    update();
}

void TextField::setSymbol(const QString& name) {
    symbol = name;
    setTextMargins(padding + symbolRoom, 0, padding, 0);
}

QSize TextField::sizeHint() const {
    return {160, QFontMetrics(font()).height() + 10};
}

void TextField::paintEvent(QPaintEvent* event) {
    const Theme& theme = Theme::current();
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF box = QRectF(rect()).adjusted(1, 1, -1, -1);
        const QColor field = window()->palette().color(QPalette::Base);
        SettingsLook::drawBox(painter, box, field, marked ? theme.warning : theme.border);
        if (marked) {
            painter.setPen(QPen(theme.warning, 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(box, SettingsLook::radius - 1, SettingsLook::radius - 1);
        } else if (hasFocus()) {
            SettingsLook::drawRing(painter, box, SettingsLook::radius - 1);
        }
        if (!symbol.isEmpty()) {
            drawSymbol(painter, QRectF(padding, 0, symbolRoom, height()), symbol, 13,
                       theme.secondary);
        }
    }
    QLineEdit::paintEvent(event);
}

}  // namespace vostel
