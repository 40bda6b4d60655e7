#include "ui/settings/OverrideIntervalRow.h"

#include "core/IntervalOptions.h"
#include "ui/settings/IntervalField.h"
#include "ui/settings/ValueColumn.h"

namespace vostel {

OverrideIntervalRow::OverrideIntervalRow(const QString& title,
                                         Binding<std::optional<double>> binding,
                                         std::function<double()> global,
                                         std::vector<double> options, QWidget* parent)
    : OverrideRow(title, parent),
      value(std::move(binding)),
      globalValue(std::move(global)),
      field(new IntervalField(title, std::move(options))),
      column(new ValueColumn(field)) {
    setKeywords(QStringLiteral("override update seconds speed"));
    addControl(column);
    addSwitch();
    connect(field, &IntervalField::picked, this, [this](double seconds) {
        value.set(seconds);
        refresh();
    });
    refresh();
}

void OverrideIntervalRow::refresh() {
    const std::optional<double> seconds = value.get();
    showOverridden(seconds.has_value());
    if (seconds) {
        field->setSeconds(*seconds);
        column->showEditor();
    } else {
        column->showText(globalText(IntervalOptions::label(globalValue())));
    }
}

void OverrideIntervalRow::setOverridden(bool overridden) {
    value.set(overridden ? std::optional(globalValue()) : std::nullopt);
}

}  // namespace vostel
