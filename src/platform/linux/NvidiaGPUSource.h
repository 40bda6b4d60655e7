#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/GPUSource.h"
#include "platform/SystemRoots.h"
#include "platform/linux/GPURest.h"
#include "platform/linux/NvmlLibrary.h"

namespace vostel {

// The cards bound to NVIDIA's own driver, by its management library.
//
// Of a card that is powered down power/runtime_status alone is read; the library is loaded when a
// card is awake for the first time. Since an open session keeps a card awake, the session is closed
// as soon as a card in it falls asleep or is to be left alone (GPURest), and opened again for the
// others. The price: on a card that is awake and idle without a display, work that begins is seen
// up to GPURest::rests later in the bar, and at once while the popover is open.
//
// Time used by a process is the integral of its share in the samples of the driver, from its first
// sight on; it is asked for in detailed readings alone.
class NvidiaGPUSource : public GPUSource {
  public:
    // `libraryPath`: what dlopen takes.
    explicit NvidiaGPUSource(const SystemRoots& roots,
                             std::string libraryPath = "libnvidia-ml.so.1");

    bool isSlow(const GPURequest& request) override;
    GPUReading read(const GPURequest& request) override;

    static constexpr double listEvery = 10;   // seconds between two looks for new cards
    static constexpr double retryAfter = 30;  // seconds after the library could not be opened

  private:
    struct Process {
        std::string name;
        double time = 0;  // nanoseconds
        double seenAt = 0;
    };
    struct Card {
        std::string id;  // "0000:01:00.0"
        std::string path;
        bool asleep = false;
        bool asked = false;  // in this reading
        GPURest rest;
        NvmlLibrary::Device device = nullptr;  // of the open session
        GPUAccelerator last;
        std::uint64_t sampledTo = 0;  // time stamp of the newest sample, microseconds
        std::optional<double> sampledAt;
        double advancedAt = 0;  // when `sampledTo` last moved
        std::map<int, Process> processes;
    };

    void prepare(const GPURequest& request);
    void list();
    void openSession(const GPURequest& request);
    void ask(Card& card, const GPURequest& request);
    void sampleProcesses(Card& card, const GPURequest& request);
    bool mayPowerDown(const Card& card) const;

    std::string proc;
    std::string sys;
    std::string library;
    std::vector<Card> cards;
    std::unique_ptr<NvmlLibrary> session;
    std::optional<double> listedAt;
    std::optional<double> preparedAt;
    std::optional<double> failedAt;
};

}  // namespace vostel
