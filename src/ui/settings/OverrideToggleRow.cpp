#include "ui/settings/OverrideToggleRow.h"

#include "ui/settings/SegmentedPicker.h"
#include "ui/settings/ValueColumn.h"

namespace vostel {

OverrideToggleRow::OverrideToggleRow(const QString& title, Binding<std::optional<bool>> binding,
                                     std::function<bool()> global, QWidget* parent)
    : OverrideRow(title, parent),
      value(std::move(binding)),
      globalValue(std::move(global)),
      picker(new SegmentedPicker(title, {tr("Off"), tr("On")})),
      column(new ValueColumn(picker)) {
    addControl(column);
    addSwitch();
    connect(picker, &SegmentedPicker::chosen, this, [this](int index) {
        value.set(index == 1);
        refresh();
    });
    refresh();
}

void OverrideToggleRow::refresh() {
    const std::optional<bool> set = value.get();
    showOverridden(set.has_value());
    if (set) {
        picker->setCurrent(*set ? 1 : 0);
        column->showEditor();
    } else {
        column->showText(globalText(globalValue() ? tr("On") : tr("Off")));
    }
}

void OverrideToggleRow::setOverridden(bool overridden) {
    value.set(overridden ? std::optional(globalValue()) : std::nullopt);
}

}  // namespace vostel
