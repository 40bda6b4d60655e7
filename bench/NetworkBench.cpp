// One tick of the network item's computation with 50 interfaces: at most 300 microseconds.
#include <benchmark/benchmark.h>
#include <sched.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "monitors/network/InterfaceInfo.h"
#include "monitors/network/InterfaceSelection.h"
#include "monitors/network/NetworkMonitor.h"
#include "platform/linux/NetlinkSource.h"

namespace {

constexpr int pairs = 25;

// An own network namespace with 25 pairs of virtual cables; each end is up and has an IPv4 and a
// link-local IPv6 address. Needs to be root; within `unshare -Urn` every user is.
void makeInterfaces() {
    static const bool made = [] {
        bool well = unshare(CLONE_NEWNET) == 0;
        for (int i = 0; i < pairs && well; ++i) {
            const std::string a = "a" + std::to_string(i);
            const std::string b = "b" + std::to_string(i);
            const std::string net = "10.9." + std::to_string(i);
            const std::string command = "ip link add " + a + " type veth peer name " + b +
                                        " && ip link set " + a + " up && ip link set " + b +
                                        " up && ip addr add " + net + ".1/30 dev " + a +
                                        " && ip addr add " + net + ".2/30 dev " + b;
            well = std::system(command.c_str()) == 0;
        }
        return well;
    }();
    if (!made) {
        std::fprintf(stderr, "cannot make a network namespace with interfaces: are you root?\n");
        std::exit(1);
    }
}

// One second further at every look, so that every reading counts.
class SteppingClock : public vostel::Clock {
  public:
    double seconds() const override { return now += 1; }
    std::chrono::system_clock::time_point calendar() const override { return {}; }

  private:
    mutable double now = 0;
};

void readInterfaces(benchmark::State& state) {
    makeInterfaces();
    vostel::NetlinkSource source;
    for (auto _ : state) {
        if (source.interfaces().size() != 2 * pairs) {
            state.SkipWithError("interfaces are missing");
        }
    }
}
BENCHMARK(readInterfaces)->Unit(benchmark::kMicrosecond);

void networkTick(benchmark::State& state) {
    makeInterfaces();
    vostel::NetlinkSource source;
    SteppingClock clock;
    vostel::NetworkMonitor monitor(source, clock);
    vostel::InterfaceSelection selection;
    const auto tick = [&] {
        const auto samples = monitor.sample(1);
        const auto addresses =
            vostel::InterfaceInfo::addresses(monitor.interfaces(), source.addresses());
        selection.update({samples,
                          monitor.onceNames(),
                          addresses,
                          vostel::InterfaceMode::automatic,
                          {},
                          std::nullopt});
    };
    for (std::size_t i = 0; i < vostel::InterfaceSelection::historyCap; ++i) {
        tick();  // fills the histories
    }
    for (auto _ : state) {
        tick();
    }
    if (selection.list().size() != 2 * pairs) {
        state.SkipWithError("interfaces are missing");
    }
}
BENCHMARK(networkTick)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
