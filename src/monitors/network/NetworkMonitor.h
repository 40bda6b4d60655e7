#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "monitors/network/NetSample.h"
#include "platform/Clock.h"
#include "platform/NetworkSource.h"

namespace vostel {

// Turns the interfaces' byte counters into rates, and adds up what passed since it was made.
class NetworkMonitor {
  public:
    // Both are borrowed and must outlive the monitor.
    NetworkMonitor(NetworkSource& source, const Clock& clock);

    // Reads the counters: the rates since the previous reading, by interface name. `interval` is
    // the time between readings that the caller aims at, in seconds.
    //
    // All rates are zero, and nothing is added to the session, in the first reading, when the
    // clock did not advance, and after a gap of more than three intervals (a suspended machine, a
    // stalled timer), of this call or the previous one, whichever is longer. A reading within 50 ms
    // of the previous one repeats that one's rates: over so short a time a single burst would look
    // like a spike. Zero is also the rate of an interface that was not there before, has another
    // index than before (made again, renamed), and of a direction whose counter went backwards or
    // jumped by more than 10 TB/s.
    std::map<std::string, NetSample> sample(double interval);

    // Whether rates have been measured at all: false until the second reading.
    bool hasMeasured() const { return measured; }

    // The interfaces of the latest reading.
    const std::vector<InterfaceCounters>& interfaces() const { return latest; }

    // Those of them that together see every byte once, by name (see countedOnce()).
    const std::set<std::string>& onceNames() const { return once; }

    // Bytes since the monitor was made, summed over onceNames(): whatever interfaces the user
    // chose to show, and each byte once.
    std::uint64_t sessionDown() const { return totalDown; }
    std::uint64_t sessionUp() const { return totalUp; }

  private:
    struct Counters {
        int index = 0;
        std::uint64_t down = 0;
        std::uint64_t up = 0;
    };

    NetworkSource& source;
    const Clock& clock;
    std::map<std::string, Counters> last;
    std::map<std::string, NetSample> lastRates;
    double lastTime = 0;
    double lastInterval = 0;
    bool primed = false;
    bool measured = false;
    std::uint64_t totalDown = 0;
    std::uint64_t totalUp = 0;
    std::vector<InterfaceCounters> latest;
    std::set<std::string> once;
};

}  // namespace vostel
