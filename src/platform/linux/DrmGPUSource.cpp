#include "platform/linux/DrmGPUSource.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace vostel {

namespace {

struct Driver {
    std::string_view name;
    std::string_view vendor;
    bool namesEngines;  // in fdinfo: without any client the load is known to be 0
};

constexpr std::array<Driver, 12> drivers{{{"amdgpu", "AMD", true},
                                          {"radeon", "AMD", false},
                                          {"i915", "Intel", true},
                                          {"xe", "Intel", true},
                                          {"nouveau", "NVIDIA", false},
                                          {"v3d", "Broadcom", true},
                                          {"vc4-drm", "Broadcom", false},
                                          {"panfrost", "Arm Mali", true},
                                          {"panthor", "Arm Mali", true},
                                          {"lima", "Arm Mali", true},
                                          {"msm", "Qualcomm Adreno", true},
                                          {"etnaviv", "Vivante", true}}};

const Driver* knownDriver(std::string_view name) {
    const auto found = std::ranges::find(drivers, name, &Driver::name);
    return found == drivers.end() ? nullptr : &*found;
}

double longestGap(const GPURequest& request) {
    return 3 * request.interval;
}

}  // namespace

DrmGPUSource::DrmGPUSource(const SystemRoots& roots) : sys(roots.sys), walker(roots.proc) {}

// Which cards there are and which of them may be asked; quick, and once for each request.
void DrmGPUSource::prepare(const GPURequest& request) {
    if (preparedAt == request.now) {
        return;
    }
    preparedAt = request.now;
    if (!listedAt || request.now - *listedAt >= listEvery || request.now < *listedAt) {
        listedAt = request.now;
        std::vector<Card> old = std::exchange(cards, {});
        for (DrmCard& drm : listDrmCards(sys, &listProblem)) {
            if (drm.driver == "nvidia") {
                continue;
            }
            const auto known = std::ranges::find_if(old, [&](const Card& card) {
                return card.drm.id == drm.id && card.drm.path == drm.path;
            });
            cards.push_back(known == old.end() ? Card{} : std::move(*known));
            if (known == old.end()) {
                cards.back().counts = drm.driver == "amdgpu";  // until it is asked
            }
            cards.back().drm = std::move(drm);
        }
    }
    for (Card& card : cards) {
        card.asleep = isAsleep(card.drm.device());
        card.asked = !card.asleep && card.rest.mayAsk(request.now, request.detailed);
        if (card.asleep) {
            card.rest.slept();
        }
        const bool intel = card.drm.driver == "i915" || card.drm.driver == "xe";
        if (card.asked && intel && !card.residency) {
            card.residency.emplace(card.drm);
            card.counts = card.residency->exists();
        } else if (!card.asked && card.residency) {
            card.residency->forget();
        }
    }
}

bool DrmGPUSource::mayWalk(const Card& card) const {
    return card.drm.pci ? card.asked : !card.drm.driver.empty();
}

bool DrmGPUSource::wantsWalk(const GPURequest& request) const {
    const bool due = !walkedAt || request.now - *walkedAt >= walkEvery || request.now < *walkedAt;
    return std::ranges::any_of(cards, [&](const Card& card) {
        // A card whose driver names no engines (a virtual one, a display alone) has its chance
        // once.
        const Driver* driver = knownDriver(card.drm.driver);
        const bool tells =
            (driver != nullptr && driver->namesEngines) || card.load.known || !walkedAt;
        const bool primed =
            walkedAt && !card.load.measured && request.now - *walkedAt >= shortestSpan;
        return mayWalk(card) && (request.detailed || ((due || primed) && !card.counts && tells));
    });
}

bool DrmGPUSource::isSlow(const GPURequest& request) {
    prepare(request);
    // The load of an AMD card is a question to its firmware, which may take its time.
    return wantsWalk(request) || std::ranges::any_of(cards, [](const Card& card) {
               return card.asked && card.drm.driver == "amdgpu";
           });
}

void DrmGPUSource::askAmd(Card& card) {
    const std::string device = card.drm.device();
    double value = 0;
    card.percent.reset();
    if (readAttribute(device + "/gpu_busy_percent", value)) {
        card.percent = value;
    }
    card.counts = card.percent.has_value();
    card.inUse.reset();
    if (readAttribute(device + "/mem_info_vram_used", value)) {
        card.inUse = value;
        // A processor's built-in graphics uses mostly system memory (GTT). It is told from a card
        // with memory of its own by the lack of the memory bus counter.
        if (access((device + "/mem_busy_percent").c_str(), F_OK) != 0 &&
            readAttribute(device + "/mem_info_gtt_used", value)) {
            *card.inUse += value;
        }
    }
    card.memoryAll.reset();
    if (readAttribute(device + "/mem_info_vram_total", value)) {
        card.memoryAll = value;
    }
}

void DrmGPUSource::askIntel(Card& card, const GPURequest& request) {
    card.percent.reset();
    if (const auto busy = card.residency->read(request.now, longestGap(request))) {
        card.percent = *busy * 100;
    }
}

void DrmGPUSource::ask(Card& card, const GPURequest& request) {
    if (!card.asked) {
        card.percent.reset();  // asleep, or idle and left alone
        return;
    }
    if (card.drm.driver == "amdgpu") {
        askAmd(card);
    } else if (card.residency) {
        askIntel(card, request);
    }
    if (card.counts) {
        // Up to this much is what an idle desktop's clock shows.
        constexpr double idlePercent = 1;
        std::optional<bool> busy;
        if (card.percent) {
            busy = *card.percent > idlePercent;
        }
        card.rest.asked(request.now, busy, [&] {
            return card.drm.pci && maySleep(card.drm.device()) && !drivesDisplay(card.drm, sys);
        });
    }
}

void DrmGPUSource::walk(const GPURequest& request) {
    std::map<std::string, std::string> nodes;
    for (const Card& card : cards) {
        for (const std::string& node : card.drm.nodes) {
            if (mayWalk(card)) {
                nodes[node] = card.drm.id;
            }
        }
    }
    const double span = walkedAt ? request.now - *walkedAt : 0;
    walkedAt = request.now;
    ledger.observe(request.now, 3 * std::max(request.interval, walkEvery),
                   walker.walk(request.now, request.detailed, nodes));
    if (span > 0 && span < shortestSpan) {
        return;  // the popover opened right after a tick: the load stays what it was
    }
    for (Card& card : cards) {
        card.load = ledger.load(card.drm.id);
    }
}

std::optional<GPUStatistics> DrmGPUSource::statistics(const Card& card, bool walked) const {
    GPUStatistics figures;
    if (card.asleep && card.drm.pci) {
        return GPUStatistics{.device = 0, .renderer = 0, .tiler = 0, .inUse = 0, .memoryAll = {}};
    }
    figures.memoryAll = card.memoryAll;
    figures.inUse = card.inUse ? *card.inUse : static_cast<double>(card.load.memory);
    if (card.counts) {
        // What the clients used is only as old as this reading while someone looks.
        const bool now = walked && card.asked && card.load.measured;
        const double load = now ? card.load.device * 100 : 0;
        figures.device = std::max(card.percent.value_or(0), load);
        // gpu_busy_percent is the activity of the graphics and compute engine.
        figures.renderer = card.drm.driver == "amdgpu" ? card.percent
                           : now                       ? std::optional(card.load.renderer * 100)
                                                       : std::nullopt;
        figures.tiler = now ? card.load.tiler * 100 : 0;
        return figures;
    }
    const Driver* driver = knownDriver(card.drm.driver);
    if (!walker.error().empty()) {
        return std::nullopt;
    }
    if (!card.load.known && (driver == nullptr || !driver->namesEngines)) {
        return std::nullopt;
    }
    figures.device = card.load.device * 100;
    figures.renderer = card.load.renderer * 100;
    figures.tiler = card.load.tiler * 100;
    return figures;
}

GPUAccelerator DrmGPUSource::accelerator(const Card& card, bool walked) const {
    GPUAccelerator result;
    result.id = card.drm.id;
    const Driver* driver = knownDriver(card.drm.driver);
    result.name = driver != nullptr ? std::string(driver->vendor) + " (" + card.drm.driver + ")"
                  : card.drm.driver.empty() ? card.drm.id
                                            : card.drm.driver;
    result.asleep = card.asleep && (card.drm.pci || card.load.device <= 0);
    result.statistics = statistics(card, walked);
    // An Intel card left alone is known to be idle; one that is asked needs two readings.
    result.measured = card.counts ? !card.asked || card.percent.has_value()
                                  : card.load.measured || !mayWalk(card);
    if (mayWalk(card)) {
        result.clients = ledger.clients(card.drm.id);
    }
    if (card.residency && card.asked && card.counts) {
        result.residency = card.residency->channels();
    }
    return result;
}

GPUReading DrmGPUSource::read(const GPURequest& request) {
    prepare(request);
    for (Card& card : cards) {
        ask(card, request);
    }
    const bool walks = wantsWalk(request);
    if (walks) {
        walk(request);
    }
    GPUReading reading{.at = request.now, .detailed = request.detailed, .accelerators = {}};
    for (const Card& card : cards) {
        reading.accelerators.push_back(accelerator(card, walks));
    }
    const std::string& problem = listProblem.empty() ? walker.error() : listProblem;
    if (problem.empty()) {
        health.succeeded();
    } else {
        health.failed(problem);
    }
    return reading;
}

}  // namespace vostel
