// One network reading with 50 interfaces: at most 300 microseconds.
#include <benchmark/benchmark.h>
#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/linux/NetlinkSource.h"

namespace {

constexpr int pairs = 25;

// An own network namespace with 25 pairs of virtual cables, each end up and with two addresses.
// Needs to be root; with `unshare -Urn` any user is.
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

void readInterfaces(benchmark::State& state) {
    makeInterfaces();
    vostel::NetlinkSource source;
    for (auto _ : state) {
        const auto interfaces = source.interfaces();
        if (interfaces.size() != 2 * pairs) {
            state.SkipWithError("interfaces are missing");
        }
    }
}
BENCHMARK(readInterfaces)->Unit(benchmark::kMicrosecond);

void readAddresses(benchmark::State& state) {
    makeInterfaces();
    vostel::NetlinkSource source;
    for (auto _ : state) {
        const auto addresses = source.addresses();
        if (addresses.size() < 2 * pairs) {
            state.SkipWithError("addresses are missing");
        }
    }
}
BENCHMARK(readAddresses)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
