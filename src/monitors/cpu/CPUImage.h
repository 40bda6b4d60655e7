#pragma once

#include <vector>

#include <QColor>
#include <QString>

#include "core/EffAppearance.h"
#include "monitors/cpu/CPUMonitor.h"
#include "statusbar/StatusImage.h"

namespace vostel {

// Everything that the CPU item's image is drawn from.
struct CPUImageInput {
    bool showSingleBar = false;
    bool showPerCoreBars = false;
    bool showGraph = false;
    bool splitCores = false;
    QString label;
    double labelSize = 7;  // points
    EffAppearance appearance;
    QColor efficiencyColor;
    int coreCount = 1;
    CoreLayout layout;
    CPULoad load;
    bool known = true;            // false: there is no load; a dash stands for it
    std::vector<double> history;  // fractions, oldest first
};

// Width of the per-core segment in points: 3 for each processor and a margin, at most 84.
double perCoreWidth(int coreCount, bool split);

// The image: single bar, per-core bars and graph, 5 points apart; the symbol "cpu" when no segment
// is on; the overall load in figures for a square cell.
StatusImage makeCPUImage(const CPUImageInput& input, const ImageContext& context);

}  // namespace vostel
