#pragma once

#include "ui/settings/Binding.h"
#include "ui/settings/SettingsRow.h"

namespace vostel {

class ThinSlider;

struct SliderRange {
    double least = 0;
    double most = 1;
    double step = 1;
};

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
    SliderRange range;
    Binding<double> value;
    ThinSlider* slider;
};

}  // namespace vostel
