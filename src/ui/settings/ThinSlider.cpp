#include "ui/settings/ThinSlider.h"

#include <QStyle>
#include <QStyleOptionSlider>
#include <QWheelEvent>

#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

namespace {

constexpr double knob = 14;
constexpr double trackHeight = 4;

}  // namespace

ThinSlider::ThinSlider(const QString& name, QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
}

QSize ThinSlider::sizeHint() const {
    return {SettingsLook::valueWidth, 26};
}

void ThinSlider::wheelEvent(QWheelEvent* event) {
    if (hasFocus()) {
        QSlider::wheelEvent(event);
    } else {
        event->ignore();
    }
}

void ThinSlider::paintEvent(QPaintEvent*) {
    QStyleOptionSlider option;
    initStyleOption(&option);
    // Where the style puts the handle is where a press finds it.
    const QRectF handle =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::current();
    const QPointF center(handle.center().x(), height() / 2.0);
    const QRectF track(2, center.y() - trackHeight / 2, width() - 4, trackHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.track);
    painter.drawRoundedRect(track, trackHeight / 2, trackHeight / 2);
    painter.setBrush(theme.accent);
    painter.drawRoundedRect(
        QRectF(track.left(), track.top(), center.x() - track.left(), trackHeight), trackHeight / 2,
        trackHeight / 2);
    painter.setBrush(Qt::white);
    painter.setPen(QPen(QColor(0, 0, 0, 60), 1));
    const QRectF circle(center.x() - knob / 2, center.y() - knob / 2, knob, knob);
    painter.drawEllipse(circle);
    if (SettingsLook::showsRing(*this)) {
        SettingsLook::drawRing(painter, circle.adjusted(-2, -2, 2, 2), knob);
    }
}

}  // namespace vostel
