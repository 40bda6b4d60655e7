#pragma once

#include <QString>

#include "statusbar/BarPainter.h"

namespace vostel {

enum class AppearanceChoice { Automatic, Dark, Light };

struct DockBarOptions {
    BarEdge edge = BarEdge::Top;
    double thickness = 22.0;  // points; kept within 12 ... 64
    // Automatic follows the desktop. Dark is the default because the first-run text
    // colour of the items is white.
    AppearanceChoice appearance = AppearanceChoice::Dark;
    QString screenName;  // an output such as "HDMI-1"; empty or not connected: the primary screen

    bool operator==(const DockBarOptions&) const = default;
};

}  // namespace vostel
