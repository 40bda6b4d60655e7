#pragma once

#include <string>
#include <utility>

#include "platform/Clock.h"
#include "platform/NetworkSource.h"

namespace vostel {

class HandClock : public Clock {
  public:
    double seconds() const override { return now; }
    std::chrono::system_clock::time_point calendar() const override { return {}; }
    double now = 1000;
};

inline InterfaceCounters ethernet(std::string name, int index, std::uint64_t received = 0,
                                  std::uint64_t sent = 0) {
    InterfaceCounters result;
    result.name = std::move(name);
    result.index = index;
    result.received = received;
    result.sent = sent;
    return result;
}

class FakeNetwork : public NetworkSource {
  public:
    std::vector<InterfaceCounters> interfaces() override { return links; }
    std::vector<InterfaceAddress> addresses() override { return found; }
    std::vector<InterfaceCounters> links;
    std::vector<InterfaceAddress> found;
};

}  // namespace vostel
