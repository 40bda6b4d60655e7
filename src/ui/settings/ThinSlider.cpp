#include "ui/settings/ThinSlider.h"

#include <algorithm>
#include <cmath>

#include <QAccessibleWidget>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QWheelEvent>

#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

namespace {

constexpr double knob = 14;
constexpr double trackHeight = 4;

class SliderAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    explicit SliderAccessible(ThinSlider* slider)
        : QAccessibleWidget(slider, QAccessible::Slider) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    QVariant currentValue() const override { return at(slider()->value()); }
    QVariant minimumValue() const override { return at(slider()->minimum()); }
    QVariant maximumValue() const override { return at(slider()->maximum()); }
    QVariant minimumStepSize() const override {
        return slider()->valueAt(1) - slider()->valueAt(0);
    }
    void setCurrentValue(const QVariant& value) override {
        slider()->setValue(slider()->positionOf(value.toDouble()));
    }

    QStringList actionNames() const override {
        return QStringList{increaseAction(), decreaseAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name == increaseAction()) {
            slider()->triggerAction(QSlider::SliderSingleStepAdd);
        } else if (name == decreaseAction()) {
            slider()->triggerAction(QSlider::SliderSingleStepSub);
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

  private:
    ThinSlider* slider() const { return static_cast<ThinSlider*>(object()); }
    QVariant at(int position) const { return slider()->valueAt(position); }
};

QAccessibleInterface* makeSliderAccessible(const QString&, QObject* object) {
    auto* slider = qobject_cast<ThinSlider*>(object);
    return slider != nullptr ? new SliderAccessible(slider) : nullptr;
}

}  // namespace

ThinSlider::ThinSlider(const QString& name, const SliderRange& sliderRange, QWidget* parent)
    : QSlider(Qt::Horizontal, parent), range(sliderRange) {
    QAccessible::installFactory(makeSliderAccessible);  // once, however often it is asked
    setRange(0, positionOf(range.most));
    setPageStep(2);
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
}

int ThinSlider::positionOf(double value) const {
    const double within = value > range.least ? std::min(value, range.most) : range.least;
    return static_cast<int>(std::lround((within - range.least) / range.step));
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
