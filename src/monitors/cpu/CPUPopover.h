#pragma once

#include <functional>

#include "monitors/cpu/CPUMonitor.h"
#include "monitors/cpu/CPUSettings.h"
#include "monitors/cpu/CPUViewModel.h"
#include "ui/BarMeter.h"
#include "ui/HeaderRow.h"
#include "ui/LineGraph.h"
#include "ui/Popover.h"
#include "ui/ProcessList.h"
#include "ui/SectionTitle.h"

namespace vostel {

// Overall load and its history, the load of every processor, the top processes.
class CPUPopover : public Popover {
    Q_OBJECT

  public:
    // Follows `model` while it lives.
    CPUPopover(CPUViewModel& model, const CPUSettings& settings, const CoreLayout& layout,
               std::function<void()> openSettings);

  private:
    void showCores();
    void showTopApps();

    CPUViewModel& model;
    const CPUSettings& settings;
    const CoreLayout layout;
    HeaderRow* header;
    LineGraph* graph;
    SectionTitle* coresTitle;
    BarMeter* cores;
    SectionTitle* efficiencyTitle = nullptr;  // null where the processors are of one kind
    BarMeter* efficiency = nullptr;
    ProcessList* processes;
    std::vector<QPropertyNotifier> notifiers;
};

}  // namespace vostel
