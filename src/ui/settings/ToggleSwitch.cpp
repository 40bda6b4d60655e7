#include "ui/settings/ToggleSwitch.h"

#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

namespace {

constexpr double trackWidth = 32;
constexpr double trackHeight = 18;
constexpr int room = 3;  // for the ring

}  // namespace

ToggleSwitch::ToggleSwitch(const QString& name, QWidget* parent) : PaintedButton(name, parent) {
    setCheckable(true);
}

QSize ToggleSwitch::sizeHint() const {
    return {static_cast<int>(trackWidth) + 2 * room, static_cast<int>(trackHeight) + 2 * room};
}

void ToggleSwitch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::current();
    const QRectF track(room, (height() - trackHeight) / 2, trackWidth, trackHeight);
    if (!isEnabled()) {
        painter.setOpacity(0.45);
    }
    painter.setPen(isChecked() ? QPen(Qt::NoPen) : QPen(theme.border, 1));
    painter.setBrush(isChecked() ? theme.accent : theme.track);
    const QRectF body = isChecked() ? track : track.adjusted(0.5, 0.5, -0.5, -0.5);
    painter.drawRoundedRect(body, body.height() / 2, body.height() / 2);
    const double knob = trackHeight - 4;
    const double left = isChecked() ? track.right() - knob - 2 : track.left() + 2;
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDown() ? QColor(225, 225, 228) : QColor(Qt::white));
    painter.drawEllipse(QRectF(left, track.top() + 2, knob, knob));
    if (SettingsLook::showsRing(*this)) {
        SettingsLook::drawRing(painter, track.adjusted(-2, -2, 2, 2), trackHeight / 2 + 2);
    }
}

}  // namespace vostel
