#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/GPUSource.h"

namespace vostel {

// Asks the sources on behalf of the module timer, without ever making the main thread wait or wake
// a second time. A source whose reading is cheap is read on the spot. A slow one has a thread of
// its own, made when the first slow reading comes up: tick() takes the reading that the thread has
// finished since the last tick, and hands it the next request. So a slow figure is one interval
// old, a source that hangs holds up no other, and a machine without a GPU has no thread.
class GPUSampler {
  public:
    explicit GPUSampler(std::vector<std::shared_ptr<GPUSource>> sources);

    // A thread that works within its time limit is joined. One that hangs in a driver is left
    // behind; it holds everything that it touches.
    ~GPUSampler();
    GPUSampler(const GPUSampler&) = delete;
    GPUSampler& operator=(const GPUSampler&) = delete;

    // The accelerators that are awake, then those asleep (with statistics of zeros, so that a
    // machine whose only GPU sleeps shows no load), then those that did not answer within
    // `answerLimit` (marked stale, without statistics). Empty when nothing is new since the last
    // tick: what is on show stays. A reading without accelerators: there is no GPU.
    std::optional<GPUReading> tick(const GPURequest& request);

    static constexpr double answerLimit = 3;  // seconds

  private:
    class Lane;
    std::vector<std::unique_ptr<Lane>> lanes;
};

}  // namespace vostel
