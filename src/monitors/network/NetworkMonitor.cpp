#include "monitors/network/NetworkMonitor.h"

#include <algorithm>
#include <utility>

#include "monitors/network/CountedOnce.h"

namespace vostel {

namespace {

constexpr double shortestSpan = 0.05;   // seconds
constexpr double longestIntervals = 3;  // a longer gap only primes
// Ten times what a machine full of 800 Gbit/s ports can carry; above it a driver's counter jumped.
constexpr double fastestRate = 1e13;  // bytes per second

std::uint64_t growth(std::uint64_t now, std::uint64_t before, double span) {
    const std::uint64_t bytes = now >= before ? now - before : 0;
    return static_cast<double>(bytes) <= fastestRate * span ? bytes : 0;
}

std::set<std::string> namesCountedOnce(const std::vector<InterfaceCounters>& interfaces) {
    std::set<std::string> names;
    const std::vector<bool> flags = countedOnce(interfaces);
    for (std::size_t i = 0; i < flags.size(); ++i) {
        if (flags[i]) {
            names.insert(interfaces[i].name);
        }
    }
    return names;
}

}  // namespace

NetworkMonitor::NetworkMonitor(NetworkSource& networkSource, const Clock& steadyClock)
    : source(networkSource), clock(steadyClock) {}

std::map<std::string, NetSample> NetworkMonitor::sample(double interval) {
    const double now = clock.seconds();
    const double span = now - lastTime;
    if (primed && span > 0 && span < shortestSpan) {
        return lastRates;
    }
    // After a change of the interval the gap was still waited for under the old one.
    const double waitedFor = std::max(interval, std::exchange(lastInterval, interval));
    const bool measurable = primed && span > 0 && span <= longestIntervals * waitedFor;
    latest = source.interfaces();
    once = namesCountedOnce(latest);
    std::map<std::string, Counters> current;
    std::map<std::string, NetSample> rates;
    for (const InterfaceCounters& interface : latest) {
        current[interface.name] = {interface.index, interface.received, interface.sent};
    }
    for (const auto& [name, counters] : current) {
        NetSample& rate = rates[name];
        const auto before = last.find(name);
        if (!measurable || before == last.end() || before->second.index != counters.index) {
            continue;
        }
        const std::uint64_t down = growth(counters.down, before->second.down, span);
        const std::uint64_t up = growth(counters.up, before->second.up, span);
        if (once.contains(name)) {
            totalDown += down;
            totalUp += up;
        }
        rate = {static_cast<double>(down) / span, static_cast<double>(up) / span};
    }
    last = std::move(current);
    lastTime = now;
    lastRates = rates;
    primed = true;
    measured = measured || measurable;
    return rates;
}

}  // namespace vostel
