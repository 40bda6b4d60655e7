#include "platform/linux/LinuxClock.h"

#include <ctime>

namespace vostel {

double LinuxClock::seconds() const {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::chrono::system_clock::time_point LinuxClock::calendar() const {
    return std::chrono::system_clock::now();
}

}  // namespace vostel
