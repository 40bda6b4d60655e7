#pragma once

#include <QIcon>
#include <QString>

namespace vostel {

// One row of the list of applications with traffic.
struct AppUsage {
    int id = 0;  // process id
    QString name;
    QIcon icon;       // null when the process belongs to no application
    double down = 0;  // bytes per second
    double up = 0;
};

}  // namespace vostel
