#pragma once

#include <utility>

#include "core/tests/FakeClock.h"
#include "platform/Platform.h"

namespace vostel {

// A machine whose load never changes, so that every picture of it is the same until a setting
// changes: eight busy processors of two kinds, half of the memory used, one graphics card, one
// interface whose traffic comes in waves. Its time is moved by hand.

inline Platform makeSteadyPlatform(FakeClock*& clock) {
    struct CPU : CPUSource {
        std::vector<std::int32_t> ticks() override {
            ++reading;
            std::vector<std::int32_t> counters;
            for (std::int32_t core = 0; core < 8; ++core) {
                const std::int32_t busy = 20 + 8 * core;
                counters.insert(counters.end(),
                                {busy * reading, 5 * reading, (95 - busy) * reading, 0});
            }
            return counters;
        }
        CoreCounts coreCounts() override { return {4, 4}; }
        int activeProcessorCount() override { return 8; }
        std::int32_t reading = 0;
    };
    struct Memory : MemorySource {
        std::optional<MemoryCounters> counters() override { return MemoryCounters{3e9, 4e9, 1e9}; }
        double physicalMemory() override { return 16e9; }
    };
    struct GPU : GPUSource {
        bool isSlow(const GPURequest&) override { return false; }
        GPUReading read(const GPURequest& request) override {
            GPUAccelerator card;
            card.id = card.name = "Card";
            card.statistics = GPUStatistics{60, 40, 20, 2e9, 8e9};
            return {request.now, request.detailed, {card}};
        }
    };
    struct Network : NetworkSource {
        explicit Network(const Clock& steady) : clock(steady) {}
        std::vector<InterfaceCounters> interfaces() override {
            InterfaceCounters link;
            link.name = "eth0";
            link.index = 2;
            const auto second = static_cast<std::uint64_t>(clock.seconds());
            link.received = 4'000'000 * second + 500'000 * (second % 7);
            link.sent = 3'000'000 * second;
            link.up = link.carrier = true;
            return {link};
        }
        std::vector<InterfaceAddress> addresses() override { return {{2, false, "192.0.2.7"}}; }
        const Clock& clock;
    };

    Platform platform = makeNullPlatform();
    auto steady = std::make_unique<FakeClock>();
    clock = steady.get();
    platform.clock = std::move(steady);
    platform.cpu = std::make_unique<CPU>();
    platform.memory = std::make_unique<Memory>();
    platform.gpu = {std::make_shared<GPU>()};
    platform.network = std::make_unique<Network>(*clock);
    return platform;
}

}  // namespace vostel
