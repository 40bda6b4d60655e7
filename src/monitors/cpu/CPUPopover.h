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
    // Follows `model` while it lives.
    CPUPopover(CPUViewModel& model, const CPUSettings& settings, const CoreLayout& layout,
               std::function<void()> openSettings);

  private:
    void showCores();

    CPUViewModel& model;
    const CPUSettings& cpuSettings;
    const CoreLayout layout;
    SectionTitle* coresTitle;
    BarMeter* cores;
    SectionTitle* efficiencyTitle = nullptr;  // null where the processors are of one kind
    BarMeter* efficiency = nullptr;
};

}  // namespace vostel
