#pragma once

#include <vector>

#include <QProperty>

#include "monitors/memory/MemoryMonitor.h"
#include "monitors/process/ProcStat.h"

namespace vostel {

// What the memory popover shows; every field notifies on change.
struct MemoryViewModel {
    QProperty<std::vector<double>> history;  // used fractions, oldest first
    QProperty<MemoryUsage> usage;
    QProperty<QList<ProcStat>> topApps;  // value: resident bytes
};

}  // namespace vostel
