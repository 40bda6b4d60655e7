#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "core/TickScheduler.h"
#include "core/tests/FakeClock.h"

namespace vostel {
namespace {

class TickSchedulerTest : public testing::Test {
  protected:
    // Moves time from wake-up to wake-up until `seconds` have passed; counts the wake-ups.
    int run(double seconds) {
        int wakeUps = 0;
        const double end = clock.now + seconds;
        while (scheduler.nextWakeUp() && clock.now + *scheduler.nextWakeUp() <= end) {
            clock.now += *scheduler.nextWakeUp();
            ++wakeUps;
            scheduler.fire();
        }
        clock.now = end;
        return wakeUps;
    }

    FakeClock clock;
    TickScheduler scheduler{clock};
};

TEST_F(TickSchedulerTest, TimersShareTheirWakeUps) {
    clock.now = 1234.567;
    int counts[5] = {};
    std::vector<std::unique_ptr<TickScheduler::Tick>> ticks;
    const double intervals[] = {0.25, 0.25, 1, 5, 2};
    for (int i = 0; i < 5; ++i) {
        // Started at different moments, as modules are.
        clock.now += 0.037;
        ticks.push_back(
            scheduler.every(intervals[i], intervals[i] * 0.15, [&counts, i] { ++counts[i]; }));
    }
    run(1);
    for (int& count : counts) {
        count = 0;
    }
    EXPECT_NEAR(run(60), 240, 1);
    EXPECT_NEAR(counts[0], 240, 1);
    EXPECT_NEAR(counts[1], 240, 1);
    EXPECT_NEAR(counts[2], 60, 1);
    EXPECT_NEAR(counts[3], 12, 1);
    EXPECT_NEAR(counts[4], 30, 1);
}

TEST_F(TickSchedulerTest, AStallOrASuspendGivesOneTick) {
    int count = 0;
    const auto tick = scheduler.every(0.25, 0.03, [&] { ++count; });
    run(1);
    count = 0;
    clock.now += 3600;
    scheduler.fire();
    scheduler.fire();
    EXPECT_EQ(count, 1);
    EXPECT_GT(*scheduler.nextWakeUp(), 0.1);
}

TEST_F(TickSchedulerTest, TimersMayStopAndStartFromACallback) {
    std::unique_ptr<TickScheduler::Tick> own;
    std::unique_ptr<TickScheduler::Tick> other;
    int ownCount = 0;
    int otherCount = 0;
    own = scheduler.every(1, 0, [&] {
        ++ownCount;
        other.reset();
        own = scheduler.every(2, 0, [&] { ++ownCount; });
    });
    other = scheduler.every(1, 0, [&] { ++otherCount; });
    run(1.6);
    EXPECT_EQ(ownCount, 1);
    EXPECT_EQ(otherCount, 0);
    run(4);
    EXPECT_EQ(ownCount, 3);
}

TEST_F(TickSchedulerTest, SillyIntervalsDoNotSpin) {
    for (const double interval : {0.0, -5.0, 1e-9, std::nan("")}) {
        int count = 0;
        const auto tick = scheduler.every(interval, interval, [&] { ++count; });
        run(1);
        EXPECT_LE(count, 60) << interval;
        EXPECT_GE(count, 10) << interval;
    }
    const auto never = scheduler.every(1e18, 1, [] {});
    EXPECT_GT(*scheduler.nextWakeUp(), 1e6);
}

// Catches a due time that is no number, at which a timer fires without end.
TEST_F(TickSchedulerTest, IntervalsBeyondAllMeasureWait) {
    for (const double factor : {2.0, 1e308, std::nan("")}) {
        scheduler.setIntervalFactor(factor);
        for (const double interval : {1e300, 1e308, HUGE_VAL}) {
            int count = 0;
            const auto tick = scheduler.every(interval, 0.15 * interval, [&] { ++count; });
            scheduler.fire();
            EXPECT_EQ(count, 0) << interval << " " << factor;
            EXPECT_GT(*scheduler.nextWakeUp(), 1e6) << interval << " " << factor;
        }
    }
    scheduler.setIntervalFactor(1);
    int count = 0;
    const auto tick = scheduler.every(1, std::nan(""), [&] { ++count; });
    run(10);
    EXPECT_NEAR(count, 10, 1);
}

TEST_F(TickSchedulerTest, ATickOutlivesItsScheduler) {
    auto local = std::make_unique<TickScheduler>(clock);
    const auto tick = local->every(1, 0, [] {});
    local.reset();
}

}  // namespace
}  // namespace vostel
