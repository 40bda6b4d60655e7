#pragma once

#include <vector>

#include <QColor>
#include <QImage>
#include <QRect>

#include "statusbar/StatusImage.h"

namespace vostel {

enum class BarEdge { Top, Bottom };  // of the screen

// The bar's own colours, all opaque.
struct BarColors {
    QColor background;
    QColor line;       // one device pixel, on the side that faces the desktop
    QColor highlight;  // background of the item under the pointer
};

BarColors barColors(Appearance appearance);

struct BarLook {
    Appearance appearance = Appearance::Dark;
    BarEdge edge = BarEdge::Top;
    int height = 22;  // device pixels
};

// One item as it is to be painted. Rectangles are device pixels of the bar.
struct BarPicture {
    int id = 0;  // of the item
    QRect cell;
    const StatusImage* image = nullptr;  // never null
    bool highlighted = false;
};

// The part `region` of a bar, opaque (Format_RGB32), one image pixel for each device pixel. Images
// are centred in their cells and are neither scaled nor moved by fractions of a pixel. Later
// pictures cover earlier ones. An empty region gives a null image.
QImage paintBar(const QRect& region, const BarLook& look, const std::vector<BarPicture>& pictures);

}  // namespace vostel
