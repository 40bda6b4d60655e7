#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "monitors/gpu/GPUSampler.h"
#include "platform/linux/NvidiaGPUSource.h"
#include "platform/tests/GPUTree.h"
#include "platform/tests/StandInNvml.h"

namespace vostel {
namespace {

// Answers with the number of its readings as device load; hangs while told to.
class FakeSource : public GPUSource {
  public:
    FakeSource(std::string theId, bool isItSlow) : id(std::move(theId)), slow(isItSlow) {}

    bool isSlow(const GPURequest&) override { return slow; }

    GPUReading read(const GPURequest& request) override {
        thread = std::this_thread::get_id();
        inside = true;
        while (hang) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        GPUReading reading{.at = request.now, .detailed = request.detailed, .accelerators = {}};
        GPUAccelerator& accelerator = reading.accelerators.emplace_back();
        accelerator.id = id;
        accelerator.asleep = asleep;
        accelerator.statistics.emplace().device = ++readings;
        inside = false;
        return reading;
    }

    // Until the thread is at rest again (or, told to hang, hangs).
    void settle() const {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (hang ? !inside : inside || readings < wanted) {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // for the hand-over
    }

    std::string id;
    bool slow;
    bool asleep = false;
    std::atomic<bool> hang = false;
    std::atomic<bool> inside = false;
    std::atomic<int> readings = 0;
    int wanted = 0;
    std::atomic<std::thread::id> thread;
};

std::vector<std::string> idsOf(const std::optional<GPUReading>& reading) {
    std::vector<std::string> ids;
    for (const GPUAccelerator& accelerator :
         reading ? reading->accelerators : std::vector<GPUAccelerator>()) {
        ids.push_back(accelerator.id);
    }
    return ids;
}

TEST(GPUSamplerTest, CheapSourceIsReadOnTheSpotAwakeOnesFirst) {
    auto sleeper = std::make_shared<FakeSource>("sleeper", false);
    sleeper->asleep = true;
    auto cheap = std::make_shared<FakeSource>("cheap", false);
    GPUSampler sampler({sleeper, cheap});
    const auto reading = sampler.tick({.now = 5});
    EXPECT_EQ(idsOf(reading), (std::vector<std::string>{"cheap", "sleeper"}));
    EXPECT_EQ(reading->at, 5);
    EXPECT_EQ(cheap->thread.load(), std::this_thread::get_id());
}

TEST(GPUSamplerTest, SlowSourceIsOneTickLate) {
    auto slow = std::make_shared<FakeSource>("slow", true);
    GPUSampler sampler({slow});
    for (int tick = 1; tick <= 3; ++tick) {
        const auto reading = sampler.tick({.now = double(tick), .interval = 1, .detailed = true});
        EXPECT_EQ(reading.has_value(), tick > 1);
        if (reading) {
            EXPECT_EQ(reading->at, tick - 1);
            EXPECT_TRUE(reading->detailed);
            EXPECT_EQ(*reading->accelerators.at(0).statistics->device, tick - 1);
        }
        slow->wanted = tick;
        slow->settle();
    }
    EXPECT_NE(slow->thread.load(), std::this_thread::get_id());
}

TEST(GPUSamplerTest, HangingSourceGoesStaleAndComesBack) {
    auto slow = std::make_shared<FakeSource>("slow", true);
    auto cheap = std::make_shared<FakeSource>("cheap", false);
    GPUSampler sampler({slow, cheap});
    sampler.tick({.now = 1});
    slow->wanted = 1;
    slow->settle();
    slow->hang = true;
    EXPECT_EQ(idsOf(sampler.tick({.now = 2})), (std::vector<std::string>{"slow", "cheap"}));
    slow->settle();
    const auto waiting = sampler.tick({.now = 5});
    EXPECT_FALSE(waiting->accelerators[0].stale);
    const auto stale = sampler.tick({.now = 5.5});
    EXPECT_EQ(idsOf(stale), (std::vector<std::string>{"cheap", "slow"})) << "the other goes on";
    EXPECT_TRUE(stale->accelerators[1].stale);
    EXPECT_FALSE(stale->accelerators[1].statistics) << "an old load must not stay on show";
    slow->hang = false;
    slow->wanted = 2;
    slow->settle();
    const auto back = sampler.tick({.now = 7});
    EXPECT_FALSE(back->accelerators[0].stale);
    EXPECT_TRUE(back->accelerators[0].statistics);
}

// A driver that never answers must not hold up the end of the program, nor say "no GPU".
TEST(GPUSamplerTest, HangingThreadIsLeftBehind) {
    auto slow = std::make_shared<FakeSource>("slow", true);
    slow->hang = true;
    {
        GPUSampler sampler({slow});
        EXPECT_FALSE(sampler.tick({.now = 1}));
        slow->settle();
        EXPECT_FALSE(sampler.tick({.now = 2}));
        const auto stale = sampler.tick({.now = 9});
        ASSERT_EQ(stale->accelerators.size(), 1u);
        EXPECT_TRUE(stale->accelerators[0].stale);
        EXPECT_FALSE(sampler.tick({.now = 10})) << "told once";
    }
    EXPECT_TRUE(slow->inside);
    slow->hang = false;
    slow->wanted = 1;
    slow->settle();
}

// The same with a management library that blocks inside a query.
TEST(GPUSamplerTest, HangingManagementLibrary) {
    void* library = dlopen(STAND_IN_NVML, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    StandInNvml* nvml = reinterpret_cast<StandInNvml* (*)()>(dlsym(library, "standIn"))();
    nvml->utilization = 70;
    nvml->hang = true;
    GPUTree tree;
    tree.add({.device = "0000:01:00.0", .driver = "nvidia"});
    GPUSampler sampler({std::make_shared<NvidiaGPUSource>(tree.roots(), STAND_IN_NVML)});
    EXPECT_FALSE(sampler.tick({.now = 1}));
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (nvml->inside == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_FALSE(sampler.tick({.now = 4}));
    const auto stale = sampler.tick({.now = 5});
    ASSERT_TRUE(stale);
    EXPECT_TRUE(stale->accelerators.at(0).stale);
    nvml->hang = false;
    std::optional<GPUReading> back;
    while (!back && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        back = sampler.tick({.now = 6});
    }
    ASSERT_TRUE(back);
    EXPECT_FALSE(back->accelerators.at(0).stale);
    EXPECT_DOUBLE_EQ(*back->accelerators[0].statistics->device, 70);
    EXPECT_EQ(back->at, 1) << "what it says is of then";
}

TEST(GPUSamplerTest, NoSourceIsNoGPU) {
    GPUSampler sampler({});
    EXPECT_TRUE(sampler.tick({.now = 1})->accelerators.empty());
}

}  // namespace
}  // namespace vostel
