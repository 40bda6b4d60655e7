#include <dlfcn.h>
#include <gtest/gtest.h>

#include "platform/linux/NvidiaGPUSource.h"
#include "platform/tests/GPUTree.h"
#include "platform/tests/StandInNvml.h"

namespace vostel {
namespace {

// A machine with the two cards that the stand-in knows, and the stand-in as it was when loaded.
class NvidiaGPUSourceTest : public testing::Test {
  protected:
    void SetUp() override {
        first = tree.add({.device = "0000:01:00.0", .driver = "nvidia", .card = 0, .render = 128});
        second = tree.add({.device = "0000:02:00.0", .driver = "nvidia", .card = 1, .render = 129});
        status(second, "suspended");
        tree.file("proc/77/comm", "blender\n");
    }

    void load(const char* library) {
        handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(handle, nullptr) << dlerror();
        nvml = reinterpret_cast<StandInNvml* (*)()>(dlsym(handle, "standIn"))();
        nvml->queries = nvml->inside = 0;
        nvml->initResult = nvml->queryResult = 0;
        nvml->sampleCount = nvml->runningCount = 0;
        nvml->utilization = 40;
        nvml->total = 143'000'000'000;
        nvml->used = 9'000'000'000;
        source.emplace(tree.roots(), library);
    }

    void status(const std::string& card, const std::string& text) const {
        tree.file(card + "power/runtime_status", text + "\n");
    }

    GPUReading read(double now, bool detailed = false) {
        return source->read({.now = now, .interval = 1, .detailed = detailed});
    }

    GPUTree tree;
    std::string first;
    std::string second;
    void* handle = nullptr;
    StandInNvml* nvml = nullptr;
    std::optional<NvidiaGPUSource> source;
};

TEST_F(NvidiaGPUSourceTest, AwakeCardIsReadAndSessionFollowsSleep) {
    load(STAND_IN_NVML);
    auto reading = read(1);
    ASSERT_EQ(reading.accelerators.size(), 2u);
    EXPECT_EQ(reading.accelerators[0].name, "NVIDIA Stand-In 9000");
    EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->device, 40);
    EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->inUse, 9e9);
    EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->memoryAll, 143e9);
    EXPECT_TRUE(reading.accelerators[1].asleep);
    EXPECT_EQ(nvml->sessions, 1);
    status(first, "suspended");
    EXPECT_TRUE(source->isSlow({.now = 2})) << "to close the session may take its time";
    const int before = nvml->queries;
    EXPECT_TRUE(read(2).accelerators[0].asleep);
    EXPECT_EQ(nvml->sessions, 0) << "an open session would keep the card awake";
    EXPECT_FALSE(source->isSlow({.now = 3}));
    status(second, "active");
    reading = read(4);
    EXPECT_TRUE(reading.accelerators[0].asleep);
    EXPECT_DOUBLE_EQ(*reading.accelerators[1].statistics->device, 40);
    EXPECT_EQ(nvml->sessions, 1);
    EXPECT_GT(nvml->queries, before);
    source.reset();
    EXPECT_EQ(nvml->sessions, 0);
}

TEST_F(NvidiaGPUSourceTest, IdleCardIsLetGo) {
    load(STAND_IN_NVML);
    nvml->utilization = 0;
    for (int now = 0; now <= 10; ++now) {
        read(now);
    }
    for (int now = 11; now < 30; ++now) {
        const auto reading = read(now);
        EXPECT_EQ(nvml->sessions, 0) << now;
        EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->device, 0);
        EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->inUse, 9e9) << "as it was";
    }
    nvml->utilization = 80;
    EXPECT_DOUBLE_EQ(*read(30).accelerators[0].statistics->device, 80);
    nvml->utilization = 0;
    for (int now = 31; now <= 60; ++now) {
        read(now, true);
        EXPECT_EQ(nvml->sessions, 1) << "someone looks";
    }
}

// The kernel started with it: its display needs no DRM connector to keep it awake.
TEST_F(NvidiaGPUSourceTest, CardOfTheDisplayStaysOpen) {
    load(STAND_IN_NVML);
    nvml->utilization = 0;
    tree.file(first + "boot_vga", "1\n");
    for (int now = 0; now <= 40; ++now) {
        read(now);
        EXPECT_EQ(nvml->sessions, 1) << now;
    }
}

TEST_F(NvidiaGPUSourceTest, ProcessTimeIsTheIntegralOfItsSamples) {
    load(STAND_IN_NVML);
    constexpr unsigned long long s = 1'000'000;  // microseconds
    const auto timeOf = [](const GPUReading& reading, const std::string& creator) {
        for (const GPUClient& client : reading.accelerators[0].clients) {
            if (client.creator == creator) {
                return client.accumulatedGPUTime.at(0) / 1e6;  // milliseconds
            }
        }
        return -1.0;
    };
    const auto sample = [this](unsigned pid, unsigned long long at, unsigned percent) {
        nvml->samples[nvml->sampleCount++] = {pid, at, percent};
    };
    nvml->running[nvml->runningCount++] = 88;
    for (unsigned i = 0; i < 150; ++i) {
        sample(77, 1000 * s + i, 90);  // more than fits at first
    }
    auto reading = read(10, true);
    EXPECT_DOUBLE_EQ(timeOf(reading, "pid 77, blender"), 0) << "from first sight on";
    EXPECT_DOUBLE_EQ(timeOf(reading, "pid 88, process 88"), 0);
    sample(77, 1000 * s + 149 + s / 2, 50);
    sample(77, 1000 * s + 149 + s, 30);
    sample(0, 1001 * s, 50);
    sample(88, 1001 * s, 4'000'000'000);
    sample(99, 1'000'000 * s, 10);  // a time stamp of another clock
    reading = read(11, true);
    EXPECT_NEAR(timeOf(reading, "pid 77, blender"), 400, 1e-6);
    EXPECT_DOUBLE_EQ(timeOf(reading, "pid 88, process 88"), 0) << "4 billion percent";
    EXPECT_EQ(timeOf(reading, "pid 99, process 99"), -1);
    nvml->sampleCount = 0;
    sample(77, 2000 * s, 100);
    EXPECT_NEAR(timeOf(read(100, true), "pid 77, blender"), 400, 1e-6) << "a gap only primes";
    sample(77, 2001 * s, 100);
    EXPECT_NEAR(timeOf(read(101, true), "pid 77, blender"), 1400, 1e-6);
    nvml->sampleCount = 0;
    for (int now = 102; now < 110; ++now) {  // the clock was set back by half an hour
        sample(77, static_cast<unsigned long long>(now) * s, 10);
        reading = read(now, true);
    }
    EXPECT_NEAR(timeOf(reading, "pid 77, blender"), 1600, 1e-6) << "believed after 5 s";
    nvml->sampleCount = 0;
    sample(77, 112 * s, 100);
    EXPECT_NEAR(timeOf(read(110, true), "pid 77, blender"), 2600, 1e-6) << "one second at most";
}

TEST_F(NvidiaGPUSourceTest, OldLibrary) {
    load(STAND_IN_NVML_OLD);
    EXPECT_FALSE(read(1, true).accelerators[0].statistics)
        << "to find a card would touch the other, which sleeps";
    EXPECT_EQ(nvml->queries, 0);
    status(second, "active");
    const auto reading = read(40, true);
    ASSERT_TRUE(reading.accelerators[0].statistics);
    EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->device, 40);
    EXPECT_EQ(reading.accelerators[0].name, "NVIDIA");
    EXPECT_TRUE(reading.accelerators[0].clients.empty());
    EXPECT_TRUE(reading.accelerators[1].statistics);
}

TEST_F(NvidiaGPUSourceTest, FailuresAreAbsentAndTriedAgain) {
    load(STAND_IN_NVML);
    nvml->initResult = 9;  // driver not loaded
    EXPECT_FALSE(read(1).accelerators[0].statistics);
    nvml->initResult = 0;
    EXPECT_FALSE(read(2).accelerators[0].statistics) << "not every second";
    EXPECT_TRUE(read(31).accelerators[0].statistics);
    nvml->queryResult = 15;  // the card is lost
    EXPECT_FALSE(read(32).accelerators[0].statistics);
    EXPECT_EQ(nvml->sessions, 0);
    nvml->queryResult = 0;
    EXPECT_TRUE(read(62).accelerators[0].statistics);
    for (const char* library : {"/nonexistent/libnvidia-ml.so.1", "libm.so.6"}) {
        source.emplace(tree.roots(), library);
        const auto reading = read(1);
        ASSERT_EQ(reading.accelerators.size(), 2u);
        EXPECT_FALSE(reading.accelerators[0].statistics);
    }
}

}  // namespace
}  // namespace vostel
