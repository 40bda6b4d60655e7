#pragma once

#include <functional>

#include "monitors/cpu/CPUMonitor.h"
#include "monitors/cpu/CPUSettings.h"
#include "monitors/cpu/CPUViewModel.h"
#include "monitors/process/UsagePopover.h"
#include "ui/BarMeter.h"

namespace vostel {

// Overall load and its history, the load of every processor, the top processes.
class CPUPopover : public UsagePopover {
    Q_OBJECT

  public:
    // Follows `model` while it lives. `layout` tells how many processors of each kind there are at
    // the moment.
    CPUPopover(CPUViewModel& model, const CPUSettings& settings, std::function<CoreLayout()> layout,
               std::function<void()> openSettings);

  private:
    void showCores();

    CPUViewModel& model;
    const CPUSettings& cpuSettings;
    std::function<CoreLayout()> layout;
    SectionTitle* coresTitle;
    BarMeter* cores;
    SectionTitle* efficiencyTitle;  // both hidden while the processors are not split
    BarMeter* efficiency;
};

}  // namespace vostel
