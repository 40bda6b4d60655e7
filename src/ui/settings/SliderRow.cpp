#include "ui/settings/SliderRow.h"

#include <cmath>

#include <QSignalBlocker>

#include "ui/settings/SettingsLook.h"
#include "ui/settings/ThinSlider.h"

namespace vostel {

SliderRow::SliderRow(const QString& title, const SliderRange& sliderRange, Binding<double> binding,
                     QWidget* parent)
    : SettingsRow(title, parent),
      prefix(title),
      range(sliderRange),
      value(std::move(binding)),
      slider(new ThinSlider(title.trimmed())) {
    slider->setRange(0, static_cast<int>(std::lround((range.most - range.least) / range.step)));
    slider->setPageStep(2);
    slider->setFixedWidth(SettingsLook::valueWidth);
    addControl(slider);
    connect(slider, &QSlider::valueChanged, this, [this](int position) {
        value.set(range.least + position * range.step);
        refresh();
    });
    refresh();
}

void SliderRow::refresh() {
    const double stored = value.get();
    const QString text = QString::number(stored, 'g', 4);
    const QSignalBlocker quiet(slider);
    slider->setValue(static_cast<int>(std::lround((stored - range.least) / range.step)));
    slider->setAccessibleDescription(text);
    slider->setToolTip(text);
    setTitle(prefix + text);
}

}  // namespace vostel
