#pragma once

#include <mutex>
#include <string>
#include <utility>

namespace vostel {

// What came of a source's readings, beside the figures: a source that cannot be read reads as zeros
// or as nothing, and this says why. From any thread.
class SourceHealth {
  public:
    void succeeded() {
        const std::lock_guard lock(mutex);
        current.clear();
    }
    // `why` for a person, without a capital and a full stop: "cannot read /proc/stat: ...". It
    // names no process, no address and nothing of the user's.
    void failed(std::string why) {
        const std::lock_guard lock(mutex);
        latest = why;
        current = std::move(why);
    }

    // Why the last reading failed; empty: it did not.
    std::string error() const {
        const std::lock_guard lock(mutex);
        return current;
    }
    // Why a reading failed last, however long ago; empty: none ever did.
    std::string lastError() const {
        const std::lock_guard lock(mutex);
        return latest;
    }

  private:
    mutable std::mutex mutex;
    std::string current;
    std::string latest;
};

}  // namespace vostel
