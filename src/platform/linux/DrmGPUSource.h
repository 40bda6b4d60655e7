#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/GPUSource.h"
#include "platform/SystemRoots.h"
#include "platform/linux/DrmCards.h"
#include "platform/linux/DrmLedger.h"
#include "platform/linux/DrmWalker.h"
#include "platform/linux/GPURest.h"
#include "platform/linux/IdleResidency.h"

namespace vostel {

// The graphics cards of the kernel's DRM subsystem, except those of NVIDIA's own driver.
//
// amdgpu has a busy counter and memory counters, i915 and xe the residency of RC6. The load of the
// others is what their clients used (v3d, panfrost, panthor, msm, etnaviv, lima and whatever else
// names engines in fdinfo); so is everybody's per-process time and, without memory counters, the
// memory in use, where a buffer shared by two clients counts twice. Clients are walked for each
// detailed reading; else every `walkEvery` seconds, and only where a card has no counter of its
// own. A walk that has nothing to compare with is followed by another at the next reading.
//
// A PCI card that is powered down is not touched: of all its files power/runtime_status alone is
// read, and descriptors of its nodes are not looked into. The small GPUs of single-chip systems
// power down between two frames, and their drivers keep the clients' times in memory: they are
// walked all the same, and are asleep when powered down without anything done since the last walk.
class DrmGPUSource : public GPUSource {
  public:
    explicit DrmGPUSource(const SystemRoots& roots);

    bool isSlow(const GPURequest& request) override;
    GPUReading read(const GPURequest& request) override;

    static constexpr double walkEvery = 5;       // seconds
    static constexpr double shortestSpan = 0.1;  // seconds; what moved in less tells nothing
    static constexpr double listEvery = 10;      // seconds between two looks for new cards

  private:
    struct Card {
        DrmCard drm;
        bool asleep = false;
        bool asked = false;             // in this reading
        bool counts = false;            // has a counter of its own
        std::optional<double> percent;  // of that counter
        std::optional<double> inUse;
        std::optional<double> memoryAll;
        std::optional<IdleResidency> residency;
        GPURest rest;
        DrmLedger::Load load;  // of the last walk
    };

    void prepare(const GPURequest& request);
    bool wantsWalk(const GPURequest& request) const;
    bool mayWalk(const Card& card) const;
    void ask(Card& card, const GPURequest& request);
    void askAmd(Card& card);
    void askIntel(Card& card, const GPURequest& request);
    void walk(const GPURequest& request);
    GPUAccelerator accelerator(const Card& card, bool walked) const;
    std::optional<GPUStatistics> statistics(const Card& card, bool walked) const;

    std::string sys;
    std::string listProblem;  // as in SourceHealth::failed()
    std::vector<Card> cards;
    std::optional<double> listedAt;
    std::optional<double> preparedAt;
    std::optional<double> walkedAt;
    DrmWalker walker;
    DrmLedger ledger;
};

}  // namespace vostel
