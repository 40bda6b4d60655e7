#pragma once

#include <algorithm>
#include <limits>

namespace vostel {

// At most one update in `interval`; times are seconds on any clock that does not run backwards.
class UpdateLimit {
  public:
    explicit UpdateLimit(double seconds) : interval(seconds) {}

    // Seconds until the next update may go out; 0 when it may go now.
    double wait(double now) const { return std::clamp(last + interval - now, 0.0, interval); }

    void noteUpdate(double now) { last = now; }

  private:
    double interval;
    double last = -std::numeric_limits<double>::infinity();
};

}  // namespace vostel
