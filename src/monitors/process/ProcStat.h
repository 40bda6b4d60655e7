#pragma once

#include <QIcon>
#include <QString>

namespace vostel {

// One row of a list of top processes.
struct ProcStat {
    int id = 0;  // process id
    QString name;
    QIcon icon;        // null when the process belongs to no application
    double value = 0;  // percent of one processor, or resident bytes

    bool operator==(const ProcStat& other) const {
        return id == other.id && name == other.name && value == other.value &&
               icon.cacheKey() == other.icon.cacheKey();
    }
};

}  // namespace vostel
