#pragma once

#include "ui/settings/Binding.h"
#include "ui/settings/OverrideRow.h"

namespace vostel {

class SegmentedPicker;
class ValueColumn;

// An on/off value that overrides the global one.
class OverrideToggleRow : public OverrideRow {
    Q_OBJECT

  public:
    OverrideToggleRow(const QString& title, Binding<std::optional<bool>> value,
                      std::function<bool()> globalValue, QWidget* parent = nullptr);

    void refresh() override;

  private:
    void setOverridden(bool overridden) override;

    Binding<std::optional<bool>> value;
    std::function<bool()> globalValue;
    SegmentedPicker* picker;
    ValueColumn* column;
};

}  // namespace vostel
