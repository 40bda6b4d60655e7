#pragma once

#include <vector>

#include "ui/settings/Binding.h"
#include "ui/settings/OverrideRow.h"

namespace vostel {

class IntervalField;
class ValueColumn;

// A refresh interval that overrides the global one.
class OverrideIntervalRow : public OverrideRow {
    Q_OBJECT

  public:
    OverrideIntervalRow(const QString& title, Binding<std::optional<double>> value,
                        std::function<double()> globalValue, std::vector<double> options,
                        QWidget* parent = nullptr);

    void refresh() override;

  private:
    void setOverridden(bool overridden) override;

    Binding<std::optional<double>> value;
    std::function<double()> globalValue;
    IntervalField* field;
    ValueColumn* column;
};

}  // namespace vostel
