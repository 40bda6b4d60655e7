#pragma once

#include "platform/Clock.h"

namespace vostel {

// Time moved by hand.
class FakeClock : public Clock {
  public:
    double seconds() const override { return now; }
    std::chrono::system_clock::time_point calendar() const override {
        return std::chrono::system_clock::time_point(
            std::chrono::duration_cast<std::chrono::system_clock::duration>(
                std::chrono::duration<double>(now)));
    }

    double now = 1000;
};

}  // namespace vostel
