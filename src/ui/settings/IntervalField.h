#pragma once

#include <vector>

#include "ui/settings/SegmentedPicker.h"

namespace vostel {

// A number of seconds out of a few. One that is not offered (it came with an import) is shown as a
// further choice.
class IntervalField : public SegmentedPicker {
    Q_OBJECT

  public:
    IntervalField(const QString& name, std::vector<double> options, QWidget* parent = nullptr);

    void setSeconds(double seconds);

  Q_SIGNALS:
    void picked(double seconds);  // by the user

  private:
    const std::vector<double> offered;
    std::vector<double> shown;
};

}  // namespace vostel
