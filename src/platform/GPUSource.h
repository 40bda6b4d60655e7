#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/SourceHealth.h"

namespace vostel {

// The figures of one graphics accelerator. A figure that the card does not offer is absent; what is
// there comes straight from outside and may be out of range.
struct GPUStatistics {
    std::optional<double> device;     // "Device Utilization %", 0 ... 100
    std::optional<double> renderer;   // "Renderer Utilization %"
    std::optional<double> tiler;      // "Tiler Utilization %"
    std::optional<double> inUse;      // "In use system memory", bytes: all memory of GPU buffers
    std::optional<double> memoryAll;  // bytes of the card's own memory
};

// One user of an accelerator.
struct GPUClient {
    std::string creator;                     // "pid N, name"; empty: none
    std::vector<double> accumulatedGPUTime;  // nanoseconds, one entry for each engine used
    std::vector<GPUClient> children;
};

// Time spent in one performance state, milliseconds, counted up from an arbitrary start.
struct GPUResidencyState {
    std::string name;
    double residency = 0;
};

struct GPUResidencyChannel {
    std::string name;
    std::vector<GPUResidencyState> states;
};

struct GPUAccelerator {
    std::string id;       // stays the same as long as the card is there: its bus address
    std::string name;     // for a person
    bool asleep = false;  // powered down; nothing but that was asked, the figures are all 0
    bool stale = false;   // did not answer in time; there are no statistics
    // False: the load is that between two readings, of which this is the first; it reads 0.
    bool measured = true;
    std::optional<GPUStatistics> statistics;
    std::vector<GPUClient> clients;
    std::vector<GPUResidencyChannel> residency;  // empty when the card has none
};

struct GPURequest {
    double now = 0;         // seconds of Clock
    double interval = 1;    // seconds since the previous request, as intended
    bool detailed = false;  // someone looks at the clients
};

struct GPUReading {
    double at = 0;          // GPURequest::now of the reading
    bool detailed = false;  // the clients are of this reading; else they may be older
    std::vector<GPUAccelerator> accelerators;
};

// Some of the machine's graphics accelerators. One call at a time, from any thread.
class GPUSource {
  public:
    virtual ~GPUSource() = default;

    SourceHealth health;  // of the readings

    // Whether read() with this request may take longer than a fraction of a millisecond, so that it
    // belongs on a worker. Always quick itself.
    virtual bool isSlow(const GPURequest& request) = 0;

    // A GPU that is powered down is never touched by it. What is a difference of two counts (time
    // used, load of cards without a load counter) starts anew after a gap: more than three
    // intervals for counters, three walks through the clients for what comes of those. Process
    // times count from first sight. Accelerators come in the order of the system.
    virtual GPUReading read(const GPURequest& request) = 0;
};

}  // namespace vostel
