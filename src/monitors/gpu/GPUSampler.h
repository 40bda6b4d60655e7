#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/GPUSource.h"

namespace vostel {

// Asks the sources on behalf of all items that show a GPU, without ever making the main thread wait
// or wake a second time. There is one in the process: no source is ever asked by two at a time, and
// one that hangs is left alone until it answers, whatever items come and go meanwhile.
//
// A source whose reading is cheap is read on the spot. A slow one has a thread of its own, made
// when the first slow reading comes up and ended when none came for `unusedFor`: a tick takes the
// reading that the thread has finished since, and hands it the next request. So a slow figure is
// one interval old, a source that hangs holds up no other, and a machine without a GPU has no
// thread. Main thread.
class GPUSampler {
  public:
    explicit GPUSampler(std::vector<std::shared_ptr<GPUSource>> sources);

    // A thread that works within its time limit is joined. One that hangs in a driver is left
    // behind; it holds everything that it touches.
    ~GPUSampler();
    GPUSampler(const GPUSampler&) = delete;
    GPUSampler& operator=(const GPUSampler&) = delete;

    // One item's view of the readings. Ends before the sampler.
    class Reader {
      public:
        explicit Reader(GPUSampler& sampler);
        ~Reader();
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;

        // The accelerators that are awake, then those asleep (with statistics of zeros, so that a
        // machine whose only GPU sleeps shows no load), then those that did not answer within
        // `answerLimit` (marked stale, without statistics). Empty while a source has not answered
        // since this reader began, and when nothing is new since its last tick: what is on show
        // stays. A reading without accelerators: there is no GPU. Clients are asked for while any
        // reader wants them.
        std::optional<GPUReading> tick(const GPURequest& request);

        // The item is switched off: never waits. The next tick begins anew.
        void stop();

      private:
        friend class GPUSampler;
        GPUSampler& sampler;
        std::optional<double> begun;  // seconds of Clock, of the first tick
        std::uint64_t seen = 0;       // of changes()
        bool looks = false;           // wants the clients
    };

    static constexpr double answerLimit = 3;  // seconds
    // One reading serves all who ask within this time of it: items with the same interval tick
    // together.
    static constexpr double together = 0.1;  // seconds
    static constexpr std::chrono::seconds unusedFor{30};

  private:
    class Lane;

    std::uint64_t changes() const;

    std::vector<std::unique_ptr<Lane>> lanes;
    std::vector<const Reader*> readers;
};

}  // namespace vostel
