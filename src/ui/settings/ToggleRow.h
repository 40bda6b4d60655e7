#pragma once

#include "ui/settings/Binding.h"
#include "ui/settings/SettingsRow.h"

namespace vostel {

class ToggleSwitch;

// A setting that is on or off.
class ToggleRow : public SettingsRow {
    Q_OBJECT

  public:
    ToggleRow(const QString& title, Binding<bool> value, QWidget* parent = nullptr);

    void refresh() override;

  private:
    Binding<bool> value;
    ToggleSwitch* toggle;
};

}  // namespace vostel
