#pragma once

#include <algorithm>

namespace vostel::nettop {

// Decides how soon after a reading an extra one between two blocks may follow: the more often
// sockets are read, the fewer come and go unseen, and a reading may cost anything from a tenth of
// a millisecond to many. All readings together stay within `share` of one processor, as far as the
// ones for the blocks leave room. Times in seconds.
class ReadingBudget {
  public:
    static constexpr double share = 0.005;
    static constexpr double shortestPause = 0.1;
    static constexpr double memory = 10;  // how long savings and debts count

    // A reading that ended at `now` has used `cost` seconds of processor time.
    void spend(double now, double cost) {
        const double earned = saved + (last < 0 ? 0 : (now - last) * share);
        saved = std::max(std::min(earned, memory * share) - cost, -memory * share);
        expected = last < 0 ? cost : (expected + cost) / 2;
        last = now;
    }

    // From the end of the last reading to the next extra one.
    double pause() const { return std::max(shortestPause, (expected - saved) / share); }

  private:
    double saved = 0;
    double expected = 0;
    double last = -1;
};

}  // namespace vostel::nettop
