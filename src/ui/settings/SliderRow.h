#pragma once

#include "ui/settings/Binding.h"
#include "ui/settings/SettingsRow.h"
#include "ui/settings/ThinSlider.h"

namespace vostel {

// A setting that is a number; the title says which one: "Label Size: 5".
class SliderRow : public SettingsRow {
    Q_OBJECT

  public:
    // `title` as it stands before the number.
    SliderRow(const QString& title, const SliderRange& range, Binding<double> value,
              QWidget* parent = nullptr);

    void refresh() override;

  private:
    QString prefix;
    Binding<double> value;
    ThinSlider* slider;
};

}  // namespace vostel
