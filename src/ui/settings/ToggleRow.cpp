#include "ui/settings/ToggleRow.h"

#include "ui/settings/ToggleSwitch.h"

namespace vostel {

ToggleRow::ToggleRow(const QString& title, Binding<bool> binding, QWidget* parent)
    : SettingsRow(title, parent), value(std::move(binding)), toggle(new ToggleSwitch(title)) {
    addControl(toggle);
    connect(toggle, &QAbstractButton::clicked, this, [this](bool on) {
        value.set(on);
        refresh();
    });
    refresh();
}

void ToggleRow::refresh() {
    toggle->setChecked(value.get());
}

}  // namespace vostel
