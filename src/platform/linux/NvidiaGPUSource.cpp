#include "platform/linux/NvidiaGPUSource.h"

#include <dirent.h>

#include <algorithm>
#include <utility>

#include "platform/linux/DrmCards.h"

namespace vostel {

namespace {

constexpr double forgetProcessAfter = 30;  // seconds

// Samples bear the time of the driver's clock. When none came for a while the machine was idle or
// that clock was set back: begin anew. One that lies far ahead of the last is not believed.
constexpr double believesSamplesFor = 5;               // seconds
constexpr std::uint64_t latestSample = 2 * 5'000'000;  // microseconds

GPUStatistics nothingUsed() {
    return {.device = 0, .renderer = 0, .tiler = 0, .inUse = 0, .memoryAll = {}};
}

}  // namespace

NvidiaGPUSource::NvidiaGPUSource(const SystemRoots& roots, std::string libraryPath)
    : proc(roots.proc), sys(roots.sys), library(std::move(libraryPath)) {}

// Links named by address under the driver: nothing of the cards is opened.
void NvidiaGPUSource::list() {
    const std::string folder = sys + "/bus/pci/drivers/nvidia";
    std::vector<std::string> ids;
    if (DIR* directory = opendir(folder.c_str())) {
        while (const dirent* entry = readdir(directory)) {
            const std::string name = entry->d_name;
            if (name.size() == 12 && name[4] == ':' && name[7] == ':') {
                ids.push_back(name);
            }
        }
        closedir(directory);
    }
    std::ranges::sort(ids);
    std::vector<Card> old = std::exchange(cards, {});
    for (const std::string& id : ids) {
        const auto known = std::ranges::find(old, id, &Card::id);
        if (known != old.end()) {
            cards.push_back(std::move(*known));
            continue;
        }
        Card& card = cards.emplace_back();
        card.id = id;
        card.path = folder + "/" + id;
        card.last.id = id;
        card.last.name = "NVIDIA";
    }
}

void NvidiaGPUSource::prepare(const GPURequest& request) {
    if (preparedAt == request.now) {
        return;
    }
    preparedAt = request.now;
    if (!listedAt || request.now - *listedAt >= listEvery || request.now < *listedAt) {
        listedAt = request.now;
        list();
    }
    for (Card& card : cards) {
        card.asleep = isAsleep(card.path);
        card.asked = !card.asleep && card.rest.mayAsk(request.now, request.detailed);
        if (card.asleep) {
            card.rest.slept();
        }
    }
}

bool NvidiaGPUSource::isSlow(const GPURequest& request) {
    prepare(request);
    return session != nullptr || std::ranges::any_of(cards, &Card::asked);
}

// A session that holds just the cards to be asked, or none.
void NvidiaGPUSource::openSession(const GPURequest& request) {
    const bool holdsOthers = std::ranges::any_of(
        cards, [](const Card& card) { return card.device != nullptr && !card.asked; });
    const bool wanted = std::ranges::any_of(cards, &Card::asked);
    if (session && (holdsOthers || !wanted)) {
        session.reset();
        for (Card& card : cards) {
            card.device = nullptr;
        }
    }
    if (!session && wanted && (!failedAt || request.now - *failedAt >= retryAfter)) {
        session = NvmlLibrary::open(library);
        failedAt.reset();
        if (!session) {
            failedAt = request.now;
        }
    }
    const bool allAsked = std::ranges::all_of(cards, &Card::asked);
    for (Card& card : cards) {
        if (session && card.asked && card.device == nullptr) {
            card.device = session->device(card.id, allAsked);
        }
    }
}

// A card with a display does not power down. Without the driver's DRM part no connector tells of
// it: then the card that the firmware started with has the display.
bool NvidiaGPUSource::mayPowerDown(const Card& card) const {
    if (!maySleep(card.path) || readAttribute(card.path + "/boot_vga") == "1") {
        return false;
    }
    return std::ranges::none_of(listDrmCards(sys), [&](const DrmCard& drm) {
        return drm.id == card.id && drivesDisplay(drm, sys);
    });
}

void NvidiaGPUSource::sampleProcesses(Card& card, const GPURequest& request) {
    const double elapsed = card.sampledAt ? request.now - *card.sampledAt : 0;
    const bool prime = !(elapsed > 0) || elapsed > 3 * request.interval ||
                       request.now - card.advancedAt > believesSamplesFor;
    if (prime) {
        card.sampledTo = 0;
        card.advancedAt = request.now;
    }
    card.sampledAt = request.now;
    auto samples = session->processSamples(card.device, card.sampledTo);
    std::ranges::sort(samples, {}, &NvmlProcessSample::at);
    const auto touch = [&](int pid) -> Process& {
        Process& process = card.processes[pid];
        if (process.seenAt != request.now || process.name.empty()) {
            process.seenAt = request.now;
            process.name = readAttribute(proc + "/" + std::to_string(pid) + "/comm");
            if (process.name.empty()) {
                process.name = "process " + std::to_string(pid);
            }
        }
        return process;
    };
    // A sample stands for the time since the one before it, but never for more than went by since
    // the last reading: without work there are no samples.
    constexpr double nanosecondsInAMicrosecond = 1000;
    std::map<int, std::uint64_t> coveredTo;
    const auto longest = static_cast<std::uint64_t>(std::max(0.0, elapsed) * 1e6);
    const std::uint64_t start = card.sampledTo;
    for (const NvmlProcessSample& sample : samples) {
        if (start > 0 && sample.at - start > latestSample) {
            break;  // the clock was set, or nonsense
        }
        Process& process = touch(sample.pid);
        std::uint64_t& covered = coveredTo.try_emplace(sample.pid, start).first->second;
        const std::uint64_t from = std::max(covered, sample.at > longest ? sample.at - longest : 0);
        if (!prime && sample.at > from) {
            process.time += sample.utilization * static_cast<double>(sample.at - from) *
                            nanosecondsInAMicrosecond;
        }
        covered = std::max(covered, sample.at);
        card.sampledTo = std::max(card.sampledTo, sample.at);
        card.advancedAt = request.now;
    }
    for (int pid : session->runningProcesses(card.device)) {
        touch(pid);
    }
    std::erase_if(card.processes, [&](const auto& entry) {
        return request.now - entry.second.seenAt > forgetProcessAfter;
    });
    card.last.clients.clear();
    for (const auto& [pid, process] : card.processes) {
        card.last.clients.push_back({.creator = "pid " + std::to_string(pid) + ", " + process.name,
                                     .accumulatedGPUTime = {process.time},
                                     .children = {}});
    }
}

void NvidiaGPUSource::ask(Card& card, const GPURequest& request) {
    card.last.asleep = card.asleep;
    if (card.asleep) {
        card.last.statistics = nothingUsed();
        card.last.clients.clear();
        return;
    }
    if (!card.asked) {  // idle and left alone: the memory is what it was
        if (card.last.statistics) {
            card.last.statistics->device = card.last.statistics->renderer = 0;
        }
        return;
    }
    card.last.statistics.reset();
    if (!session || card.device == nullptr) {
        return;
    }
    if (card.last.name == "NVIDIA") {
        const std::string name = session->name(card.device);
        card.last.name = name.empty() ? card.last.name : name;
    }
    const auto busy = session->utilization(card.device);
    const auto memory = session->memory(card.device);
    if (busy || memory) {
        GPUStatistics& figures = card.last.statistics.emplace();
        if (busy) {
            figures.device = figures.renderer = *busy * 100;
        }
        if (memory) {
            figures.inUse = memory->used;
            figures.memoryAll = memory->total;
        }
    }
    if (request.detailed) {
        sampleProcesses(card, request);
    }
    // A card that cannot tell its load is not held awake for it either.
    card.rest.asked(request.now, busy.value_or(0) > 0, [&] { return mayPowerDown(card); });
}

GPUReading NvidiaGPUSource::read(const GPURequest& request) {
    prepare(request);
    openSession(request);
    GPUReading reading{.at = request.now, .detailed = request.detailed, .accelerators = {}};
    bool failed = false;
    for (Card& card : cards) {
        ask(card, request);
        failed = failed || (card.device != nullptr && !card.last.statistics);
        reading.accelerators.push_back(card.last);
    }
    if (failedAt == request.now) {
        health.failed("cannot use " + library);
    } else if (failed) {
        health.failed("the driver of the NVIDIA card does not answer");
    } else if (!failedAt) {
        health.succeeded();
    }
    if (failed) {
        // The driver went away under it, or the card: the next reading starts afresh.
        session.reset();
        failedAt = request.now;
        for (Card& card : cards) {
            card.device = nullptr;
        }
    }
    return reading;
}

}  // namespace vostel
