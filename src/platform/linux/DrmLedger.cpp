#include "platform/linux/DrmLedger.h"

#include <algorithm>
#include <utility>

namespace vostel {

namespace {

constexpr int believedAfter = 5;  // walks
constexpr double nanosecondsInASecond = 1e9;

// Descriptors of a client without a number are one client for each process.
std::uint64_t clientKey(const DrmDescriptor& descriptor) {
    constexpr std::uint64_t withoutNumber = 1ull << 63;
    return descriptor.info.client.value_or(withoutNumber |
                                           static_cast<std::uint64_t>(descriptor.pid));
}

}  // namespace

// Nanoseconds of busy time since the last walk; the counts move on to what `engine` says.
double DrmLedger::gained(EngineCount& count, const DrmEngine& engine, double elapsed, bool prime) {
    const std::uint64_t busy = engine.busy ? *engine.busy : engine.cycles.value_or(0);
    const std::uint64_t total = engine.totalCycles.value_or(0);
    const bool first = !std::exchange(count.seen, true);
    if (!first && busy < count.busy && ++count.below < believedAfter) {
        return 0;
    }
    const std::uint64_t more = first || busy < count.busy ? 0 : busy - count.busy;
    const std::uint64_t ticks = first || total < count.total ? 0 : total - count.total;
    count.below = 0;
    count.busy = busy;
    count.total = total;
    const double limit = elapsed * nanosecondsInASecond * engine.capacity;
    if (prime || more == 0) {
        return 0;
    }
    if (engine.busy) {
        // The counts are read a little earlier or later than `elapsed` says, so somewhat more than
        // the limit is still true; far more is nonsense.
        const auto time = static_cast<double>(more);
        return time > 2 * limit ? limit : time;
    }
    return ticks == 0 ? 0
                      : std::min(limit, elapsed * nanosecondsInASecond * static_cast<double>(more) /
                                            static_cast<double>(ticks));
}

void DrmLedger::charge(Card& card, Client& client, const DrmDescriptor& from, double elapsed,
                       bool prime) {
    Process& owner = card.processes[client.owner];
    for (const DrmEngine& engine : from.info.engines) {
        EngineSum& sum = card.engines[engine.name];
        const double time = gained(client.engines[engine.name], engine, elapsed, prime);
        sum.nanoseconds += time;
        sum.capacity = std::max(sum.capacity, engine.capacity);
        if (time > 0) {
            owner.times[engine.name] += time;
        }
    }
}

void DrmLedger::observe(double now, double longestGap, std::vector<DrmDescriptor> walk) {
    const double elapsed = now - lastAt;
    const bool prime = walks == 0 || !(elapsed > 0) || elapsed > longestGap;
    ++walks;
    lastAt = now;
    lastElapsed = prime ? 0 : elapsed;
    for (auto& [id, card] : cards) {
        for (auto& [name, sum] : card.engines) {
            sum.nanoseconds = 0;
        }
    }
    // Equal clients side by side, their present owner first, else the lowest process id.
    const auto isOwner = [this](const DrmDescriptor& descriptor) {
        const auto card = cards.find(descriptor.card);
        if (card == cards.end()) {
            return false;
        }
        const auto client = card->second.clients.find(clientKey(descriptor));
        return client != card->second.clients.end() && client->second.owner == descriptor.pid;
    };
    std::ranges::sort(walk, {}, [&](const DrmDescriptor& descriptor) {
        return std::tuple(std::string_view(descriptor.card), clientKey(descriptor),
                          !isOwner(descriptor), descriptor.pid);
    });
    for (DrmDescriptor& descriptor : walk) {
        Card& card = cards[descriptor.card];
        card.walk = walks;
        Process& process = card.processes[descriptor.pid];
        process.walk = walks;
        process.name = std::move(descriptor.process);
        Client& client = card.clients[clientKey(descriptor)];
        if (std::exchange(client.walk, walks) == walks) {
            continue;  // another descriptor of it
        }
        client.owner = descriptor.pid;
        client.memory = descriptor.info.memory;
        charge(card, client, descriptor, elapsed, prime);
    }
    for (auto& [id, card] : cards) {
        std::erase_if(card.clients,
                      [this](const auto& entry) { return entry.second.walk != walks; });
        std::erase_if(card.processes,
                      [this](const auto& entry) { return entry.second.walk != walks; });
    }
}

DrmLedger::Load DrmLedger::load(const std::string& card) const {
    Load load;
    load.measured = lastElapsed > 0;
    const auto found = cards.find(card);
    if (found == cards.end()) {
        return load;
    }
    load.known = !found->second.engines.empty();
    for (const auto& [id, client] : found->second.clients) {
        load.memory += client.memory;
    }
    for (const auto& [name, sum] : found->second.engines) {
        if (lastElapsed <= 0) {
            break;
        }
        const double busy =
            std::min(1.0, sum.nanoseconds / (lastElapsed * nanosecondsInASecond * sum.capacity));
        load.device = std::max(load.device, busy);
        if (drmEngineKind(name) == DrmEngineKind::renderer) {
            load.renderer = std::max(load.renderer, busy);
        } else if (drmEngineKind(name) == DrmEngineKind::tiler) {
            load.tiler = std::max(load.tiler, busy);
        }
    }
    return load;
}

std::vector<GPUClient> DrmLedger::clients(const std::string& card) const {
    std::vector<GPUClient> result;
    const auto found = cards.find(card);
    if (found == cards.end()) {
        return result;
    }
    for (const auto& [pid, process] : found->second.processes) {
        GPUClient client;
        client.creator = "pid " + std::to_string(pid) + ", " + process.name;
        for (const auto& [engine, time] : process.times) {
            client.accumulatedGPUTime.push_back(time);
        }
        result.push_back(std::move(client));
    }
    return result;
}

bool DrmLedger::holds(const std::string& card) const {
    const auto found = cards.find(card);
    return found != cards.end() && !found->second.processes.empty();
}

}  // namespace vostel
