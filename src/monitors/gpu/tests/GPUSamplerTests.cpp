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
    GPUSampler::Reader reader(sampler);
    const auto reading = reader.tick({.now = 5});
    EXPECT_EQ(idsOf(reading), (std::vector<std::string>{"cheap", "sleeper"}));
    EXPECT_EQ(reading->at, 5);
    EXPECT_EQ(cheap->thread.load(), std::this_thread::get_id());
}

TEST(GPUSamplerTest, SlowSourceIsOneTickLate) {
    auto slow = std::make_shared<FakeSource>("slow", true);
    GPUSampler sampler({slow});
    GPUSampler::Reader reader(sampler);
    for (int tick = 1; tick <= 3; ++tick) {
        const auto reading = reader.tick({.now = double(tick), .interval = 1, .detailed = true});
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
    GPUSampler::Reader reader(sampler);
    reader.tick({.now = 1});
    slow->wanted = 1;
    slow->settle();
    slow->hang = true;
    EXPECT_EQ(idsOf(reader.tick({.now = 2})), (std::vector<std::string>{"slow", "cheap"}));
    slow->settle();
    const auto waiting = reader.tick({.now = 5});
    EXPECT_FALSE(waiting->accelerators[0].stale);
    const auto stale = reader.tick({.now = 5.5});
    EXPECT_EQ(idsOf(stale), (std::vector<std::string>{"cheap", "slow"})) << "the other goes on";
    EXPECT_TRUE(stale->accelerators[1].stale);
    EXPECT_FALSE(stale->accelerators[1].statistics) << "an old load must not stay on show";
    slow->hang = false;
    slow->wanted = 2;
    slow->settle();
    const auto back = reader.tick({.now = 7});
    EXPECT_FALSE(back->accelerators[0].stale);
    EXPECT_TRUE(back->accelerators[0].statistics);
}

// A driver that never answers must not hold up the end of the program, nor say "no GPU".
TEST(GPUSamplerTest, HangingThreadIsLeftBehind) {
    auto slow = std::make_shared<FakeSource>("slow", true);
    slow->hang = true;
    {
        GPUSampler sampler({slow});
        GPUSampler::Reader reader(sampler);
        EXPECT_FALSE(reader.tick({.now = 1}));
        slow->settle();
        EXPECT_FALSE(reader.tick({.now = 2}));
        const auto stale = reader.tick({.now = 9});
        ASSERT_EQ(stale->accelerators.size(), 1u);
        EXPECT_TRUE(stale->accelerators[0].stale);
        EXPECT_FALSE(reader.tick({.now = 10})) << "told once";
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
    GPUSampler::Reader reader(sampler);
    EXPECT_FALSE(reader.tick({.now = 1}));
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (nvml->inside == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_FALSE(reader.tick({.now = 4}));
    const auto stale = reader.tick({.now = 5});
    ASSERT_TRUE(stale);
    EXPECT_TRUE(stale->accelerators.at(0).stale);
    nvml->hang = false;
    std::optional<GPUReading> back;
    while (!back && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        back = reader.tick({.now = 6});
    }
    ASSERT_TRUE(back);
    EXPECT_FALSE(back->accelerators.at(0).stale);
    EXPECT_DOUBLE_EQ(*back->accelerators[0].statistics->device, 70);
    EXPECT_EQ(back->at, 1) << "what it says is of then";
}

// One call at a time is all that it stands, as the real ones.
class UnguardedSource : public GPUSource {
  public:
    bool isSlow(const GPURequest& request) override {
        const Call call(*this);
        asked.push_back(request);
        return asked.size() % 3 != 0;
    }
    GPUReading read(const GPURequest& request) override {
        const Call call(*this);
        do {
            std::this_thread::sleep_for(std::chrono::microseconds(300));
        } while (hang);
        asked.push_back(request);
        ++readings;
        return {request.now, request.detailed, std::vector<GPUAccelerator>(1)};
    }

    std::atomic<int> overlaps = 0;
    std::atomic<int> readings = 0;
    std::atomic<bool> hang = false;

  private:
    struct Call {
        explicit Call(UnguardedSource& called) : source(called) {
            source.overlaps += source.inside++ > 0 ? 1 : 0;
        }
        ~Call() { --source.inside; }
        UnguardedSource& source;
    };
    std::atomic<int> inside = 0;
    std::vector<GPURequest> asked;  // for the thread sanitizer
};

TEST(GPUSamplerTest, OneSourceManyReaders) {
    auto source = std::make_shared<UnguardedSource>();
    GPUSampler sampler({source});
    GPUSampler::Reader item(sampler);
    auto part = std::make_unique<GPUSampler::Reader>(sampler);
    int served[2] = {};
    for (int tick = 0; tick < 400; ++tick) {
        const double now = tick * 0.25;
        served[0] += item.tick({.now = now, .interval = 0.25}) ? 1 : 0;
        served[1] += part->tick({.now = now + 0.001, .interval = 0.25}) ? 1 : 0;
        if (tick % 50 == 0) {  // switched off and on, in the middle of a reading too
            part = std::make_unique<GPUSampler::Reader>(sampler);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(tick % 7 * 100));
    }
    EXPECT_EQ(source->overlaps, 0);
    EXPECT_GT(served[0], 20);
    EXPECT_GT(served[1], 20) << "the second gets what the first took";
    EXPECT_LT(source->readings, 402) << "one reading serves both";
}

// Somebody looks at one of two items: both are asked in its name, whoever ticks first.
TEST(GPUSamplerTest, ALookerGetsTheClientsWhoeverTicksFirst) {
    auto slow = std::make_shared<FakeSource>("slow", true);
    GPUSampler sampler({slow});
    GPUSampler::Reader other(sampler);
    GPUSampler::Reader looker(sampler);
    looker.tick({.now = 1, .detailed = true});
    std::optional<GPUReading> reading;
    for (int tick = 2; tick < 5; ++tick) {
        slow->wanted = tick - 1;
        slow->settle();
        other.tick({.now = double(tick)});
        reading = looker.tick({.now = tick + 0.01, .detailed = true});
    }
    ASSERT_TRUE(reading);
    EXPECT_TRUE(reading->detailed);
    EXPECT_GE(reading->at, 3) << "the clients are old";
    looker.stop();
    slow->wanted = 4;
    slow->settle();
    other.tick({.now = 5});
    slow->wanted = 5;
    slow->settle();
    EXPECT_FALSE(other.tick({.now = 6})->detailed) << "asked for although nobody looks";
}

// Switched off while a driver hangs, and on again: the driver is left alone until it answers, and
// what it says then is of the past.
TEST(GPUSamplerTest, ARestartDoesNotTouchASourceThatHangs) {
    auto source = std::make_shared<UnguardedSource>();
    GPUSampler sampler({source});
    source->hang = true;
    auto reader = std::make_unique<GPUSampler::Reader>(sampler);
    EXPECT_FALSE(reader->tick({.now = 1}));
    reader = std::make_unique<GPUSampler::Reader>(sampler);
    EXPECT_FALSE(reader->tick({.now = 3}));
    const auto stale = reader->tick({.now = 5});
    ASSERT_TRUE(stale) << "it has not answered since 1";
    EXPECT_TRUE(stale->accelerators.at(0).stale);
    reader->stop();
    const auto told = reader->tick({.now = 6});
    ASSERT_TRUE(told) << "who begins now is told, too";
    EXPECT_TRUE(told->accelerators.at(0).stale);
    EXPECT_EQ(source->readings, 0);
    reader->stop();
    source->hang = false;
    std::optional<GPUReading> fresh;
    for (double now = 20; !fresh && now < 2000; now += 1) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        fresh = reader->tick({.now = now});
        if (fresh && fresh->accelerators.at(0).stale) {
            fresh.reset();  // it is still at it
        }
    }
    ASSERT_TRUE(fresh);
    EXPECT_GE(fresh->at, 20 - GPUSampler::together) << "a reading from before it began";
    EXPECT_EQ(source->overlaps, 0);
}

TEST(GPUSamplerTest, NoSourceIsNoGPU) {
    GPUSampler sampler({});
    GPUSampler::Reader reader(sampler);
    EXPECT_TRUE(reader.tick({.now = 1})->accelerators.empty());
}

}  // namespace
}  // namespace vostel
