#pragma once

#include <QColor>

namespace vostel {

// The appearance an item is drawn with: its own overrides over the global settings.
struct EffAppearance {
    QColor foreground;
    QColor background;
    QColor text;
    bool monochrome = false;
};

}  // namespace vostel
