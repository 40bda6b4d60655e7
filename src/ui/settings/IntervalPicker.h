#pragma once

#include "ui/settings/Binding.h"
#include "ui/settings/SettingsRow.h"

namespace vostel {

class IntervalField;

// A setting that is a refresh interval in seconds.
class IntervalPicker : public SettingsRow {
    Q_OBJECT

  public:
    IntervalPicker(const QString& title, Binding<double> value, QWidget* parent = nullptr);

    void refresh() override;

  private:
    Binding<double> value;
    IntervalField* field;
};

}  // namespace vostel
