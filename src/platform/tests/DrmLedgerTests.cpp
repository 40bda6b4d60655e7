#include <gtest/gtest.h>

#include "platform/linux/DrmLedger.h"

namespace vostel {
namespace {

constexpr std::uint64_t ms = 1'000'000;  // nanoseconds

DrmDescriptor descriptor(int pid, std::uint64_t client, std::string engine, std::uint64_t busy,
                         std::uint32_t capacity = 1) {
    DrmDescriptor result{"card", pid, "app", {}};
    result.info.client = client;
    result.info.engines = {{std::move(engine), busy, {}, {}, capacity}};
    result.info.memory = 1000;
    return result;
}

double timeOf(const DrmLedger& ledger, int pid) {
    for (const GPUClient& client : ledger.clients("card")) {
        if (client.creator == "pid " + std::to_string(pid) + ", app") {
            double sum = 0;
            for (double time : client.accumulatedGPUTime) {
                sum += time;
            }
            return sum;
        }
    }
    return -1;
}

// A client held twice by its process, by its child, and passed on to another.
TEST(DrmLedgerTest, ClientCountsOnceForOneProcess) {
    DrmLedger ledger;
    ledger.observe(0, 5, {descriptor(20, 1, "gfx", 0), descriptor(10, 1, "gfx", 0)});
    EXPECT_FALSE(ledger.load("card").measured);
    ledger.observe(1, 5,
                   {descriptor(20, 1, "gfx", 300 * ms), descriptor(10, 1, "gfx", 300 * ms),
                    descriptor(10, 1, "gfx", 300 * ms), descriptor(5, 1, "gfx", 300 * ms)});
    EXPECT_DOUBLE_EQ(ledger.load("card").device, 0.3);
    EXPECT_EQ(ledger.load("card").memory, 1000u);
    EXPECT_EQ(timeOf(ledger, 10), 300 * ms) << "the first owner stays, whoever comes";
    EXPECT_EQ(timeOf(ledger, 20), 0);
    ledger.observe(2, 5, {descriptor(20, 1, "gfx", 400 * ms)});
    EXPECT_EQ(timeOf(ledger, 20), 100 * ms) << "not all that the client ever used";
    EXPECT_EQ(timeOf(ledger, 10), -1) << "gone";
}

TEST(DrmLedgerTest, EnginesByCapacityAndKind) {
    DrmLedger ledger;
    const auto walk = [](std::uint64_t t) {
        return std::vector{
            descriptor(1, 1, "video", t * 900 * ms, 2), descriptor(1, 2, "render", t * 100 * ms),
            descriptor(2, 3, "render", t * 200 * ms), descriptor(2, 4, "bin", t * 50 * ms)};
    };
    ledger.observe(10, 5, walk(1));
    ledger.observe(11, 5, walk(2));
    const auto load = ledger.load("card");
    EXPECT_DOUBLE_EQ(load.device, 0.45);
    EXPECT_DOUBLE_EQ(load.renderer, 0.3);
    EXPECT_DOUBLE_EQ(load.tiler, 0.05);
    EXPECT_FALSE(ledger.load("another").known);
}

// Every count that misleads: the load stays within 0 ... 1 and processes never gain what they
// did not use.
TEST(DrmLedgerTest, MisleadingCounts) {
    struct Step {
        double at;
        std::uint64_t busy;
        double load;
    };
    struct Case {
        const char* what;
        std::vector<Step> steps;
        double gained;  // by the process, ns
    };
    constexpr std::uint64_t largest = ~0ull;
    const Case cases[] = {
        {"falls for a while",
         {{0, 500 * ms, 0}, {1, 400 * ms, 0}, {2, 450 * ms, 0}, {3, 600 * ms, 0.1}},
         100.0 * ms},
        {"falls for good",
         {{0, 500 * ms, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}, {5, 0, 0}, {6, ms, 0.001}},
         1.0 * ms},
        {"a gap primes only", {{0, 0, 0}, {600, 500 * ms, 0}, {601, 700 * ms, 0.2}}, 200.0 * ms},
        {"time stands still", {{5, 0, 0}, {5, 500 * ms, 0}, {6, 600 * ms, 0.1}}, 100.0 * ms},
        {"nonsense", {{0, 0, 0}, {1, largest, 1}}, 1000.0 * ms},
        {"read a little late", {{0, 0, 0}, {1, 1010 * ms, 1}}, 1010.0 * ms},
    };
    for (const Case& example : cases) {
        SCOPED_TRACE(example.what);
        DrmLedger ledger;
        for (const Step& step : example.steps) {
            ledger.observe(step.at, 5, {descriptor(1, 1, "gfx", step.busy)});
            EXPECT_NEAR(ledger.load("card").device, step.load, 1e-9) << "at " << step.at;
        }
        EXPECT_DOUBLE_EQ(timeOf(ledger, 1), example.gained);
    }
}

// Cycles are a share of all cycles gone by, whatever their frequency.
TEST(DrmLedgerTest, Cycles) {
    DrmLedger ledger;
    for (std::uint64_t t : {1, 2, 3}) {
        DrmDescriptor descriptor{"card", 1, "app", {}};
        descriptor.info.client = 1;
        descriptor.info.engines = {{"rcs", {}, t * 25, t == 3 ? 0 : t * 100, 1}};
        ledger.observe(static_cast<double>(t) * 2, 7, {descriptor});
        EXPECT_NEAR(ledger.load("card").renderer, t == 2 ? 0.25 : 0, 1e-9);
    }
    EXPECT_DOUBLE_EQ(timeOf(ledger, 1), 500.0 * ms);
}

}  // namespace
}  // namespace vostel
