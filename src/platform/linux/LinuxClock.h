#pragma once

#include "platform/Clock.h"

namespace vostel {

class LinuxClock : public Clock {
  public:
    double seconds() const override;
    std::chrono::system_clock::time_point calendar() const override;
};

}  // namespace vostel
