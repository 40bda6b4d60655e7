#pragma once

#include <QString>

#include "core/EffAppearance.h"
#include "statusbar/StatusImage.h"

namespace vostel {

// The image of an item whose value is one fraction.
struct BarImage {
    double fraction = 0;   // 0 ... 1
    bool known = true;     // false: there is no value; a dash stands for it
    QString label;         // the user's; empty: none
    double labelSize = 7;  // points
    QString shortName;     // stands for an empty label in a square cell: "MEM"
    QString instead = {};  // what a square cell shows in place of the value: a sign or two
    EffAppearance appearance;

    // A bar 8 points wide; in a square cell the figures.
    StatusImage make(const ImageContext& context) const;
    // The whole percentage and a meter, or `instead` without a meter.
    StatusImage makeSquare(const ImageContext& context) const;
};

}  // namespace vostel
