#pragma once

#include <vector>

#include <QProperty>

#include "monitors/process/UsageViewModel.h"

namespace vostel {

// What the CPU popover shows: the history is that of the overall load, the top processes' values
// are percent of one processor.
struct CPUViewModel : UsageViewModel {
    QProperty<std::vector<double>> perCore;  // fractions
    QProperty<double> overall;               // fraction
};

}  // namespace vostel
