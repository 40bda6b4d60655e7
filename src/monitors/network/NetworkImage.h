#pragma once

#include <vector>

#include <QColor>
#include <QString>

#include "core/EffAppearance.h"
#include "monitors/network/DisplayMode.h"
#include "monitors/network/NetSample.h"
#include "statusbar/StatusImage.h"

namespace vostel {

// Everything that the network item's image is drawn from.
struct NetworkImageInput {
    DisplayMode mode = DisplayMode::stacked;
    DisplayStyle style = DisplayStyle::line;
    bool showNumbers = true;
    QString label;
    double labelSize = 7;  // points
    EffAppearance appearance;
    QColor upColor;
    NetSample current;
    bool known = true;               // false: there are no rates; dashes stand for them
    std::vector<NetSample> history;  // oldest first
};

// The image: the graph and, on request, the two rates beside it, upload over download. Its width
// depends on the settings alone, never on the rates. In a square cell the rates alone.
StatusImage makeNetworkImage(const NetworkImageInput& input, const ImageContext& context);

// A rate in at most four characters: "0", "12K", "1.5M", "999G". 1024 as the base; anything from
// 999.5 on takes the next unit.
QString shortRate(double bytesPerSecond);

}  // namespace vostel
