#pragma once

#include <QList>
#include <QProperty>
#include <QString>

#include "monitors/gpu/GPUState.h"
#include "monitors/gpu/GPUStats.h"
#include "monitors/process/UsageViewModel.h"

namespace vostel {

// One accelerator of the machine.
struct GPUCard {
    QString name;
    GPUState state = GPUState::awake;
    double utilization = 0;  // fraction
    bool shown = false;      // the one that the item's figures are of

    bool operator==(const GPUCard&) const = default;
};

// What the GPU popover shows: the history is that of the utilisation, the top processes' values are
// milliseconds of GPU time per second.
struct GPUViewModel : UsageViewModel {
    QProperty<GPUStats> stats;
    QProperty<GPUState> state{GPUState::awake};
    QProperty<QList<GPUCard>> cards;
    // Whether somebody has looked long enough for an empty list to mean that nobody uses the GPU.
    QProperty<bool> ratesKnown;
};

}  // namespace vostel
