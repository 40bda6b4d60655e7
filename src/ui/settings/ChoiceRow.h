#pragma once

#include <vector>

#include "ui/settings/Binding.h"
#include "ui/settings/SettingsRow.h"

namespace vostel {

class SegmentedPicker;

struct Choice {
    QString value;  // as it is stored
    QString label;
};

// A setting that is one of a few texts. A stored text that is none of them shows as the first one.
class ChoiceRow : public SettingsRow {
    Q_OBJECT

  public:
    ChoiceRow(const QString& title, std::vector<Choice> choices, Binding<QString> value,
              QWidget* parent = nullptr);

    void refresh() override;

  private:
    std::vector<Choice> choices;
    Binding<QString> value;
    SegmentedPicker* picker;
};

}  // namespace vostel
