#pragma once

#include <vector>

#include <QProperty>

#include "monitors/process/ProcStat.h"

namespace vostel {

// What UsagePopover shows; every field notifies on change.
struct UsageViewModel {
    QProperty<std::vector<double>> history;  // fractions, oldest first
    QProperty<QList<ProcStat>> topApps;
};

}  // namespace vostel
