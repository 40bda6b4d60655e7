#pragma once

#include <algorithm>
#include <optional>

namespace vostel {

// At most one update in `interval`; times are seconds on any clock that does not run backwards.
class UpdateLimit {
  public:
    explicit UpdateLimit(double seconds) : interval(seconds) {}

    // Seconds until the next update may go out; 0 when it may go now.
    double wait(double now) const {
        return last ? std::clamp(*last + interval - now, 0.0, interval) : 0.0;
    }

    void noteUpdate(double now) { last = now; }

  private:
    double interval;
    std::optional<double> last;
};

}  // namespace vostel
