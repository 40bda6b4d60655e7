#include <gtest/gtest.h>

#include <cmath>

#include "FakeNetwork.h"
#include "monitors/network/InterfaceInfo.h"
#include "monitors/network/InterfaceMode.h"
#include "monitors/network/NetworkMonitor.h"

namespace vostel {
namespace {

constexpr std::uint64_t gigabyte = 1'000'000'000;

struct Reading {
    const char* fault;
    double elapsed;  // seconds since the first reading, which saw eth0, index 2, at 5000 and 7000
                     // bytes
    std::string name;
    int index;
    std::uint64_t received;
    std::uint64_t sent;
    NetSample rate;
    std::uint64_t sessionDown;
    std::uint64_t sessionUp;
};

TEST(NetworkMonitorTest, RatesOfTheSecondReading) {
    const Reading rows[] = {
        {"plain rate", 2, "eth0", 2, 7000, 8000, {1000, 500}, 2000, 1000},
        {"100 GB/s", 1, "eth0", 2, 100 * gigabyte + 5000, 7000, {1e11, 0}, 100 * gigabyte, 0},
        {"a direction that went back", 1, "eth0", 2, 10, 7600, {0, 600}, 0, 600},
        {"a counter that jumped to its end", 1, "eth0", 2, ~0ull, 7600, {0, 600}, 0, 600},
        {"made again under its name", 1, "eth0", 9, 900000, 900000, {0, 0}, 0, 0},
        {"renamed", 1, "lan0", 2, 900000, 900000, {0, 0}, 0, 0},
        {"stopped clock", 0, "eth0", 2, 900000, 900000, {0, 0}, 0, 0},
        {"clock that went back", -5, "eth0", 2, 900000, 900000, {0, 0}, 0, 0},
        {"suspended: more than three intervals", 3.01, "eth0", 2, 900000, 9000, {0, 0}, 0, 0},
        {"late, but within three intervals", 2.5, "eth0", 2, 7500, 7000, {1000, 0}, 2500, 0},
        {"a second reading at once must not look like a spike",
         0.001,
         "eth0",
         2,
         70000,
         7000,
         {0, 0},
         0,
         0},
    };
    for (const Reading& row : rows) {
        SCOPED_TRACE(row.fault);
        FakeNetwork network;
        HandClock clock;
        NetworkMonitor monitor(network, clock);
        network.links = {ethernet("eth0", 2, 5000, 7000)};
        EXPECT_EQ(monitor.sample(1).at("eth0"), NetSample());
        clock.now += row.elapsed;
        network.links = {ethernet(row.name, row.index, row.received, row.sent)};
        const auto rates = monitor.sample(1);
        ASSERT_EQ(rates.size(), 1u);
        const NetSample rate = rates.begin()->second;
        EXPECT_NEAR(rate.down, row.rate.down, row.rate.down * 1e-9);
        EXPECT_NEAR(rate.up, row.rate.up, row.rate.up * 1e-9);
        EXPECT_EQ(monitor.sessionDown(), row.sessionDown);
        EXPECT_EQ(monitor.sessionUp(), row.sessionUp);
    }
}

// A gap that was waited for under a long interval still counts when the interval was shortened
// meanwhile; a suspended machine is a gap all the same, and the reading after counts by its own.
TEST(NetworkMonitorTest, AChangedIntervalLosesNothing) {
    const struct {
        double before;
        double after;
        double gap;
        double rate;
    } rows[] = {{5, 1, 4.9, 1000}, {1, 5, 4.9, 1000}, {5, 1, 15.1, 0}, {1, 5, 15.1, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.gap);
        FakeNetwork network;
        HandClock clock;
        NetworkMonitor monitor(network, clock);
        network.links = {ethernet("eth0", 2)};
        monitor.sample(row.before);
        clock.now += row.gap;
        network.links[0].received += static_cast<std::uint64_t>(std::llround(1000 * row.gap));
        EXPECT_NEAR(monitor.sample(row.after).at("eth0").down, row.rate, 1e-6);
        EXPECT_NEAR(static_cast<double>(monitor.sessionDown()), row.rate * row.gap, 1e-6);
        clock.now += 3.1 * row.after;
        network.links[0].received += 1'000'000;
        EXPECT_EQ(monitor.sample(row.after).at("eth0").down, 0) << "judged by a past interval";
    }
}

// Counters that cannot be read for once: no rate from before the failure to after it.
TEST(NetworkMonitorTest, FailedReadingsPrimeAgain) {
    FakeNetwork network;
    HandClock clock;
    NetworkMonitor monitor(network, clock);
    const std::vector<InterfaceCounters> before = {ethernet("eth0", 2, 1000)};
    network.links = before;
    monitor.sample(1);
    network.links.clear();
    clock.now += 1;
    EXPECT_TRUE(monitor.sample(1).empty());
    network.links = before;
    network.links[0].received = 50000;
    clock.now += 1;
    EXPECT_EQ(monitor.sample(1).at("eth0"), NetSample());
    network.links[0].received = 51000;
    clock.now += 1;
    EXPECT_EQ(monitor.sample(1).at("eth0"), (NetSample{1000, 0}));
    EXPECT_EQ(monitor.sessionDown(), 1000u);
}

// What a repeated reading did not use belongs to the next one.
TEST(NetworkMonitorTest, NothingIsLostByReadingTwiceAtOnce) {
    FakeNetwork network;
    HandClock clock;
    NetworkMonitor monitor(network, clock);
    network.links = {ethernet("eth0", 2)};
    monitor.sample(1);
    for (const double step : {1.0, 0.01, 0.99}) {
        clock.now += step;
        network.links[0].received += static_cast<std::uint64_t>(1000 * step);
        EXPECT_NEAR(monitor.sample(1).at("eth0").down, 1000, 1e-6);
    }
    EXPECT_EQ(monitor.sessionDown(), 2000u);
}

// Session totals of a bridge and its port: what passed, not twice of it.
TEST(NetworkMonitorTest, TheSessionCountsEachByteOnce) {
    FakeNetwork network;
    HandClock clock;
    NetworkMonitor monitor(network, clock);
    network.links = {ethernet("eth0", 2), ethernet("br0", 3)};
    network.links[0].master = 3;
    network.links[0].carrier = true;
    network.links[1].kind = "bridge";
    monitor.sample(1);
    clock.now += 1;
    network.links[0].received = network.links[1].received = 1000;
    EXPECT_EQ(monitor.sample(1).at("br0").down, 1000);
    EXPECT_EQ(monitor.sessionDown(), 1000u);
}

TEST(InterfaceInfoTest, WhichAddressesAreKept) {
    const std::vector<InterfaceCounters> links = {ethernet("eth0", 2), ethernet("wlan0", 3)};
    const std::vector<InterfaceAddress> found = {
        {1, false, "127.0.0.1"},   {2, false, "10.0.0.1"},     {2, false, "10.0.0.2"},
        {2, true, "FE80::1%eth0"}, {2, true, "fe80::2"},       {2, true, "2001:db8::1"},
        {2, true, "2001:db8::2"},  {3, true, "fe80::3%wlan0"},
    };
    auto addresses = InterfaceInfo::addresses(links, found);
    ASSERT_EQ(addresses.size(), 2u);
    EXPECT_EQ(addresses["eth0"].ipv4, "10.0.0.2");
    EXPECT_EQ(addresses["eth0"].ipv6Global, "2001:db8::1");
    EXPECT_EQ(addresses["eth0"].ipv6LinkLocal, "FE80::1");
    EXPECT_EQ(addresses["wlan0"].best(), "fe80::3");
}

TEST(InterfaceModeTest, StoredTextThenLegacyKey) {
    EXPECT_EQ(interfaceModeFrom("all", false), InterfaceMode::all);
    EXPECT_EQ(interfaceModeFrom("custom", true), InterfaceMode::custom);
    EXPECT_EQ(interfaceModeFrom("Automatic", true), InterfaceMode::all);
    EXPECT_EQ(interfaceModeFrom("Automatic", false), InterfaceMode::custom);
    EXPECT_EQ(interfaceModeFrom("", std::nullopt), InterfaceMode::automatic);
    EXPECT_EQ(interfaceModeFrom(std::nullopt, std::nullopt), InterfaceMode::automatic);
}

}  // namespace
}  // namespace vostel
