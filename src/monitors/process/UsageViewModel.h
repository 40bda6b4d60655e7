#pragma once

#include <vector>

#include <QProperty>
#include <QString>

#include "monitors/process/ProcStat.h"

namespace vostel {

// What UsagePopover shows; every field notifies on change.
struct UsageViewModel {
    QProperty<std::vector<double>> history;  // fractions, oldest first
    QProperty<QList<ProcStat>> topApps;
    QProperty<bool> measured{true};  // false: there is no figure, or none yet
    QProperty<QString> problem;      // why there is none; empty: it is just not known yet
};

}  // namespace vostel
