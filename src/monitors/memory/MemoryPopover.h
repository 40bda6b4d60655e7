#pragma once

#include <functional>

#include "core/ModuleSettings.h"
#include "monitors/memory/MemoryViewModel.h"
#include "ui/HeaderRow.h"
#include "ui/LineGraph.h"
#include "ui/Popover.h"
#include "ui/ProcessList.h"

namespace vostel {

// Used memory and its history, and who holds most of it.
class MemoryPopover : public Popover {
    Q_OBJECT

  public:
    // Follows `model` while it lives.
    MemoryPopover(MemoryViewModel& model, const ModuleSettings& settings,
                  std::function<void()> openSettings);

  private:
    void showUsage();
    void showTopApps();

    MemoryViewModel& model;
    const ModuleSettings& settings;
    HeaderRow* header;
    LineGraph* graph;
    ProcessList* processes;
    std::vector<QPropertyNotifier> notifiers;
};

}  // namespace vostel
