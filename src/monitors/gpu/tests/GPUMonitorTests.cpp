#include <gtest/gtest.h>

#include <limits>

#include "monitors/gpu/GPUAppRateTracker.h"
#include "monitors/gpu/GPUMonitor.h"
#include "monitors/gpu/GPUReport.h"

namespace vostel {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

GPUAccelerator accelerator(const std::string& id, GPUStatistics statistics) {
    GPUAccelerator result;
    result.id = id;
    result.statistics = statistics;
    return result;
}

GPUStatistics load(double device, double renderer, double tiler, double inUse = 0) {
    return {device, renderer, tiler, inUse, {}};
}

TEST(GPUMonitorTest, BusiestAcceleratorWithinBounds) {
    struct Case {
        const char* what;
        std::vector<GPUStatistics> statistics;
        const char* taken;
        double utilization, renderer, tiler, inUse;
    };
    const Case cases[] = {
        {"the second is busier", {load(20, 5, 5), load(10, 50, 3, 7)}, "1", 0.5, 0.5, 0.03, 7},
        {"of equals the first", {load(50, 0, 0, 1), load(0, 50, 0, 2)}, "0", 0.5, 0, 0, 1},
        {"more than all", {load(130, 0, 1e300)}, "0", 1, 0, 1, 0},
        {"both over the top are equal", {load(130, 0, 0), load(180, 0, 0)}, "0", 1, 0, 0, 0},
        {"not numbers", {load(nan, -40, -infinity, nan)}, "0", 0, 0, 0, 0},
        {"infinite", {load(infinity, nan, 30, infinity)}, "0", 0.3, 0, 0.3, 0},
        {"nothing known", {GPUStatistics{}}, "0", 0, 0, 0, 0},
    };
    for (const Case& example : cases) {
        SCOPED_TRACE(example.what);
        std::vector<GPUAccelerator> all(1);  // one without statistics comes first
        for (const GPUStatistics& statistics : example.statistics) {
            all.push_back(accelerator(std::to_string(all.size() - 1), statistics));
        }
        const auto sample = GPUMonitor::sampleIORegistry(all);
        ASSERT_TRUE(sample);
        EXPECT_EQ(sample->accelerator, example.taken);
        EXPECT_DOUBLE_EQ(sample->stats.utilization, example.utilization);
        EXPECT_DOUBLE_EQ(sample->stats.renderer, example.renderer);
        EXPECT_DOUBLE_EQ(sample->stats.tiler, example.tiler);
        EXPECT_DOUBLE_EQ(sample->stats.inUseBytes, example.inUse);
    }
    EXPECT_FALSE(GPUMonitor::sampleIORegistry({}));
    EXPECT_FALSE(GPUMonitor::sampleIORegistry(std::vector<GPUAccelerator>(2)));
}

TEST(GPUMonitorTest, ClientsOfAllAccelerators) {
    const auto client = [](std::string creator, std::vector<double> times,
                           std::vector<GPUClient> children = {}) {
        return GPUClient{std::move(creator), std::move(times), std::move(children)};
    };
    std::vector<GPUAccelerator> all(2);
    all[0].clients = {
        client("pid 7, a, b\xff ", {1, 2, nan, -5, infinity}),
        client("", {100},
               {client("pid 8,x", {10},
                       {client("pid 7, a, b\xff", {20}, {client("pid 9, too deep", {1})})})})};
    for (const char* bad : {"pid 5", "pid ,x", "pid 5,", "pid 5,  ", "pid 5x, y", "PID 5, x",
                            "pid -5, x", "pid 99999999999999999999, x", "pid  5, x"}) {
        all[0].clients.push_back(client(bad, {1}));
    }
    all[1].clients = {client("pid 8, x", {30})};
    all[1].statistics = load(0, 0, 0);
    const auto sample = GPUMonitor::sampleIORegistry(all);
    ASSERT_EQ(sample->apps.size(), 2u);
    EXPECT_DOUBLE_EQ(sample->apps.at(7).gpuTimeNS, 23);
    EXPECT_EQ(sample->apps.at(7).name, "a, b\xff");
    EXPECT_DOUBLE_EQ(sample->apps.at(8).gpuTimeNS, 40);
}

TEST(GPUReportTest, BusyFraction) {
    struct Case {
        const char* what;
        std::vector<GPUResidencyChannel> before, now;
        std::optional<double> busy;
    };
    const auto states = [](double off, double p1, double p2) {
        return std::vector<GPUResidencyChannel>{{"OTHER", {{"OFF", 1e9}}},
                                                {"GPUPH", {{"OFF", off}, {"P1", p1}, {"P2", p2}}}};
    };
    const Case cases[] = {
        {"three states", states(1000, 50, 0), states(1600, 250, 200), 0.4},
        {"no time", states(5, 5, 5), states(5, 5, 5), 0.0},
        {"a counter fell", states(1000, 50, 0), states(0, 150, 0), 1.0},
        {"not a number", states(0, 0, 0), states(nan, 100, infinity), 1.0},
        {"no such channel", states(0, 0, 0), {{"CPU", {{"OFF", 5}}}}, std::nullopt},
        {"no states", states(0, 0, 0), {{"GPUPH", {}}}, std::nullopt},
        {"no channel before", {}, states(100, 0, 0), std::nullopt},
    };
    for (const Case& example : cases) {
        SCOPED_TRACE(example.what);
        GPUReport report;
        std::vector<GPUAccelerator> all(2);
        all[0].id = "first";
        all[1].id = "second";
        all[1].residency = example.before;
        EXPECT_FALSE(report.sample(all, "first")) << "the second is remembered all the same";
        all[1].residency = example.now;
        EXPECT_EQ(report.sample(all, "second"), example.busy);
        EXPECT_FALSE(report.sample(all, "third"));
    }
}

TEST(GPUAppRateTrackerTest, MillisecondsASecond) {
    struct Step {
        double at;
        std::map<int, double> times;  // milliseconds
        std::map<int, double> rates;
    };
    GPUAppRateTracker tracker;
    for (const Step& step : {
             Step{10, {{1, 100}, {2, 50}, {3, 7}}, {}},
             Step{12, {{1, 400}, {2, 40}, {3, 7}, {4, 900}}, {{1, 150}}},  // 2 fell, 3 idle, 4 new
             Step{13, {{2, 45}, {4, 901}}, {{2, 5}, {4, 1}}},
             Step{13, {{4, 950}}, {}},
             Step{11, {{4, 960}}, {}},  // time ran back
             Step{12, {{4, 970}}, {{4, 10}}},
         }) {
        std::map<int, GPUClientUsage> apps;
        for (const auto& [pid, time] : step.times) {
            apps[pid].gpuTimeNS = time * 1e6;
        }
        EXPECT_EQ(tracker.rates(apps, step.at), step.rates) << step.at;
    }
}

}  // namespace
}  // namespace vostel
