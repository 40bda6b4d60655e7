#pragma once

#include <functional>
#include <vector>

#include "monitors/gpu/GPUSettings.h"
#include "monitors/gpu/GPUViewModel.h"
#include "monitors/process/UsagePopover.h"
#include "ui/EmptyState.h"
#include "ui/KeyValueRow.h"
#include "ui/NoteLine.h"

namespace vostel {

// Utilisation of the busiest GPU and its history, its parts, and who uses the GPUs most.
class GPUPopover : public UsagePopover {
    Q_OBJECT

  public:
    // Follows `model` while it lives.
    GPUPopover(GPUViewModel& model, const GPUSettings& settings,
               std::function<void()> openSettings);

  private:
    void showStats();
    void showState();
    void showCards();

    GPUViewModel& model;
    EmptyState* absent;
    NoteLine* note;
    KeyValueRow* renderer;
    KeyValueRow* tiler;
    KeyValueRow* inUse;
    SectionTitle* cardsTitle;
    std::vector<KeyValueRow*> cards;  // only with more than one GPU
};

}  // namespace vostel
