#pragma once

#include <chrono>

namespace vostel {

// The two clocks of the program. Injected, so that tests move time by hand.
class Clock {
  public:
    virtual ~Clock() = default;

    // Seconds on a clock that never runs backwards and goes on counting while the machine is
    // suspended (CLOCK_BOOTTIME). Every rate and every cadence is measured on it.
    virtual double seconds() const = 0;

    // The calendar, for what a person reads. It may jump.
    virtual std::chrono::system_clock::time_point calendar() const = 0;
};

}  // namespace vostel
