#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/GPUSource.h"
#include "platform/linux/DrmFdinfo.h"

namespace vostel {

// One descriptor of a DRM device, as found in one walk through the processes.
struct DrmDescriptor {
    std::string card;  // DrmCard::id
    int pid = 0;
    std::string process;  // its name
    DrmFdinfo info;
};

// Turns walks into time used: of each engine of a card, and of each process.
//
// A client (one opening of a device) counts once however many descriptors and processes hold it:
// for the process that held it first, the lowest process id at first sight. A count that falls
// stays at the larger value until it is passed, as the kernel's document asks; one that stays below
// for five walks is believed. What a client used before it was first seen is not counted, so
// process times start at 0.
class DrmLedger {
  public:
    // `now` in seconds. The walk only primes when it is the first, when time stood still, or when
    // more than `longestGap` seconds went by.
    void observe(double now, double longestGap, std::vector<DrmDescriptor> walk);

    struct Load {
        double device = 0;  // the busiest engine, 0 ... 1
        double renderer = 0;
        double tiler = 0;
        bool known = false;     // there are engines to tell from
        bool measured = false;  // between the last two walks; false when the last one primed
        std::uint64_t memory = 0;
    };

    // Between the last two walks.
    Load load(const std::string& card) const;

    // A client for each process that holds the card, with one time for each engine it has used.
    std::vector<GPUClient> clients(const std::string& card) const;

    // Processes seen in the last walk.
    bool holds(const std::string& card) const;

  private:
    struct EngineCount {
        std::uint64_t busy = 0;  // or cycles
        std::uint64_t total = 0;
        int below = 0;  // walks in a row that showed less than `busy`
        bool seen = false;
    };
    struct Client {
        int owner = 0;
        std::uint64_t walk = 0;
        std::uint64_t memory = 0;
        std::map<std::string, EngineCount, std::less<>> engines;
    };
    struct Process {
        std::string name;
        std::uint64_t walk = 0;
        std::map<std::string, double, std::less<>> times;  // nanoseconds by engine
    };
    struct EngineSum {
        double nanoseconds = 0;
        std::uint32_t capacity = 1;
    };
    struct Card {
        std::uint64_t walk = 0;
        std::map<std::uint64_t, Client> clients;
        std::map<int, Process> processes;
        std::map<std::string, EngineSum, std::less<>> engines;
    };

    void charge(Card& card, Client& client, const DrmDescriptor& from, double elapsed, bool prime);
    static double gained(EngineCount& count, const DrmEngine& engine, double elapsed, bool prime);

    std::map<std::string, Card> cards;
    double lastAt = 0;
    double lastElapsed = 0;  // 0: the last walk primed
    std::uint64_t walks = 0;
};

}  // namespace vostel
