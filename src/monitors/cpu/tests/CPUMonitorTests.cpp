#include <gtest/gtest.h>

#include <climits>

#include "monitors/cpu/CPUMonitor.h"

namespace vostel {
namespace {

class ScriptedSource : public CPUSource {
  public:
    std::vector<std::int32_t> ticks() override { return next; }
    CoreCounts coreCounts() override { return {}; }
    int activeProcessorCount() override { return 1; }
    std::vector<std::int32_t> next;
};

TEST(CPUMonitorTest, LoadsFromDifferences) {
    ScriptedSource source;
    CPUMonitor monitor(source);
    const struct {
        const char* what;
        std::vector<std::int32_t> ticks;  // user, system, idle, nice per processor
        std::vector<double> loads;
    } steps[] = {
        {"first reading", {10, 0, 0, 0, 0, 0, 0, 0}, {0, 0}},
        {"one busy, one at a quarter", {20, 0, 0, 0, 1, 1, 6, 0}, {1, 0.25}},
        {"nothing moved", {20, 0, 0, 0, 1, 1, 6, 0}, {0, 0}},
        {"nice counts as busy; idle went backwards", {20, 0, 5, 5, 11, 1, 1, 0}, {0.5, 1}},
        {"user went backwards", {10, 0, 30, 5, 11, 1, 2, 0}, {0, 0}},
        {"a processor went", {11, 0, 30, 5}, {0}},
        {"and came back", {11, 0, 30, 5, 0, 0, 0, 0}, {0, 0}},
        {"no reading", {}, {}},
        {"after no reading", {12, 0, 31, 5, 0, 0, 4, 0}, {0.5, 0}},
    };
    for (const auto& step : steps) {
        source.next = step.ticks;
        const CPULoad load = monitor.sample();
        EXPECT_EQ(load.perCore, step.loads) << step.what;
        double sum = 0;
        for (double value : step.loads) {
            sum += value;
        }
        EXPECT_DOUBLE_EQ(load.overall,
                         step.loads.empty() ? 0 : sum / static_cast<double>(step.loads.size()));
    }
}

TEST(CPUMonitorTest, CountersWrapAt32Bits) {
    ScriptedSource source;
    CPUMonitor monitor(source);
    source.next = {INT_MAX - 10, 0, INT_MAX - 50, 0};
    monitor.sample();
    source.next = {INT_MIN + 14, 0, INT_MIN + 24, 0};  // 25 and 75 ticks later
    EXPECT_DOUBLE_EQ(monitor.sample().overall, 0.25);
}

TEST(CoreLayoutTest, Split) {
    const std::vector<double> four{1, 2, 3, 4};
    EXPECT_EQ((CoreLayout{2, 2}.split(four).efficiency), (std::vector<double>{1, 2}));
    EXPECT_EQ((CoreLayout{2, 2}.split(four).performance), (std::vector<double>{3, 4}));
    for (const CoreLayout& layout : {CoreLayout{0, 4}, CoreLayout{4, 0}, CoreLayout{1, 4}}) {
        EXPECT_EQ(layout.split(four).performance, four);
        EXPECT_TRUE(layout.split(four).efficiency.empty());
    }
}

}  // namespace
}  // namespace vostel
