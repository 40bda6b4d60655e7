#include "ui/settings/SliderRow.h"

#include <QSignalBlocker>

#include "statusbar/PlainText.h"
#include "ui/settings/SettingsLook.h"
#include "ui/settings/ThinSlider.h"

namespace vostel {

namespace {

// "Label Size: " as a name.
QString withoutColon(QString title) {
    title = title.trimmed();
    return title.endsWith(u':') ? title.chopped(1) : title;
}

}  // namespace

SliderRow::SliderRow(const QString& title, const SliderRange& range, Binding<double> binding,
                     QWidget* parent)
    : SettingsRow(title, parent),
      prefix(title),
      value(std::move(binding)),
      slider(new ThinSlider(withoutColon(title), range)) {
    slider->setFixedWidth(SettingsLook::valueWidth);
    addControl(slider);
    connect(slider, &QSlider::valueChanged, this, [this](int position) {
        value.set(slider->valueAt(position));
        refresh();
    });
    refresh();
}

void SliderRow::refresh() {
    const double stored = value.get();
    const QString text = QString::number(stored, 'g', 4);
    const QSignalBlocker quiet(slider);
    slider->setValue(slider->positionOf(stored));
    PlainText::setToolTip(*slider, text);
    setTitle(prefix + text);
}

}  // namespace vostel
