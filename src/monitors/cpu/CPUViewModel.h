#pragma once

#include <vector>

#include <QProperty>

#include "monitors/process/ProcStat.h"

namespace vostel {

// What the CPU popover shows; every field notifies on change.
struct CPUViewModel {
    QProperty<std::vector<double>> history;  // overall load, fractions, oldest first
    QProperty<std::vector<double>> perCore;  // fractions
    QProperty<double> overall;               // fraction
    QProperty<QList<ProcStat>> topApps;  // value: percent of one processor
};

}  // namespace vostel
