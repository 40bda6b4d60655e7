#include "platform/Platform.h"

namespace vostel {

namespace {

class NullClock : public Clock {
  public:
    double seconds() const override { return 0; }
    std::chrono::system_clock::time_point calendar() const override { return {}; }
};

class NullCPUSource : public CPUSource {
  public:
    std::vector<std::int32_t> ticks() override { return {}; }
    CoreCounts coreCounts() override { return {}; }
    int activeProcessorCount() override { return 1; }
};

class NullProcessSource : public ProcessSource {
  public:
    bool read(std::vector<ProcessRecord>& records) override {
        records.clear();
        return false;
    }
    std::optional<ProcessDetails> details(std::int32_t, double) override { return std::nullopt; }
};

class NullMemorySource : public MemorySource {
  public:
    std::optional<MemoryCounters> counters() override { return std::nullopt; }
    double physicalMemory() override { return 0; }
};

class NullNetworkSource : public NetworkSource {
  public:
    std::vector<InterfaceCounters> interfaces() override { return {}; }
    std::vector<InterfaceAddress> addresses() override { return {}; }
};

}  // namespace

Platform makeNullPlatform() {
    Platform platform;
    platform.clock = std::make_unique<NullClock>();
    platform.cpu = std::make_unique<NullCPUSource>();
    platform.processes = std::make_unique<NullProcessSource>();
    platform.memory = std::make_unique<NullMemorySource>();
    platform.network = std::make_unique<NullNetworkSource>();
    return platform;
}

}  // namespace vostel
