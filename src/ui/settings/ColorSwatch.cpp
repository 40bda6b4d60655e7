#include "ui/settings/ColorSwatch.h"

#include "core/ColorText.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

ColorSwatch::ColorSwatch(const QString& name, QWidget* parent) : PaintedButton(name, parent) {}

void ColorSwatch::setColor(const QColor& color) {
    if (shown != color) {
        shown = color;
        setAccessibleDescription(hexString(color));
        update();
    }
}

void ColorSwatch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(rect()).adjusted(3, 3, -3, -3);
    SettingsLook::drawColor(painter, box, shown);
    if (SettingsLook::showsRing(*this)) {
        SettingsLook::drawRing(painter, box.adjusted(-2, -2, 2, 2), SettingsLook::radius);
    }
}

}  // namespace vostel
