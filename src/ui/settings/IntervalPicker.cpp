#include "ui/settings/IntervalPicker.h"

#include "core/IntervalOptions.h"
#include "ui/settings/IntervalField.h"

namespace vostel {

IntervalPicker::IntervalPicker(const QString& title, Binding<double> binding, QWidget* parent)
    : SettingsRow(title, parent),
      value(std::move(binding)),
      field(new IntervalField(
          title, {IntervalOptions::monitors.begin(), IntervalOptions::monitors.end()})) {
    setKeywords(QStringLiteral("update seconds speed"));
    addControl(field);
    connect(field, &IntervalField::picked, this, [this](double seconds) {
        value.set(seconds);
        refresh();
    });
    refresh();
}

void IntervalPicker::refresh() {
    field->setSeconds(value.get());
}

}  // namespace vostel
