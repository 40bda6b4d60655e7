#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

#include <QCoreApplication>
#include <QElapsedTimer>

#include "core/Background.h"
#include "core/DefaultsStore.h"
#include "core/GlobalSettings.h"
#include "core/tests/FakeClock.h"
#include "monitors/gpu/GPUModule.h"
#include "monitors/process/AppIcons.h"
#include "platform/Platform.h"
#include "statusbar/OffscreenBar.h"
#include "ui/Piece.h"
#include "ui/Popover.h"

namespace vostel {
namespace {

GPUAccelerator card(const std::string& name, std::optional<double> percent, double rest = 20) {
    GPUAccelerator result;
    result.id = result.name = name;
    if (percent) {
        result.statistics = {
            .device = percent, .renderer = rest, .tiler = rest / 2, .inUse = 1536, .memoryAll = {}};
    }
    return result;
}

class FakeGPU : public GPUSource {
  public:
    bool isSlow(const GPURequest&) override {
        overlaps += inside ? 1 : 0;
        return slow;
    }
    GPUReading read(const GPURequest& request) override {
        overlaps += inside.exchange(true) ? 1 : 0;
        while (slow && hangs) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        detailed = request.detailed;
        interval = request.interval;
        inside = false;
        return {.at = request.now, .detailed = request.detailed, .accelerators = cards};
    }
    // As processes use it: milliseconds of GPU time since the beginning.
    void use(const std::map<int, double>& milliseconds) {
        cards.at(0).clients.clear();
        for (const auto& [pid, time] : milliseconds) {
            cards[0].clients.push_back({.creator = "pid " + std::to_string(pid) + ", \x01 app",
                                        .accumulatedGPUTime = {time * 1e6},
                                        .children = {}});
        }
    }

    std::vector<GPUAccelerator> cards{card("Radeon", 25)};
    std::atomic<bool> slow = false;
    std::atomic<bool> hangs = true;
    std::atomic<bool> inside = false;
    std::atomic<int> overlaps = 0;
    bool detailed = false;
    double interval = 0;
};

// Process 1 can be looked up, the others belong to somebody else.
class FakeProcesses : public ProcessSource {
  public:
    bool read(std::vector<ProcessRecord>&) override { return false; }
    std::optional<ProcessDetails> details(std::int32_t pid, double) override {
        ++asked;
        return pid == 1 ? std::optional(ProcessDetails{{"python3", "-m", "shop"}, "", ""})
                        : std::nullopt;
    }
    std::atomic<int> asked = 0;
};

class NoOrder : public ItemOrderStore {
  public:
    QStringList itemOrder() const override { return {}; }
    void setItemOrder(const QStringList&) override {}
};

class GPUModuleTest : public testing::Test {
  protected:
    GPUModuleTest() {
        auto ownClock = std::make_unique<FakeClock>();
        auto ownList = std::make_unique<FakeProcesses>();
        clock = ownClock.get();
        list = ownList.get();
        platform.clock = std::move(ownClock);
        platform.processes = std::move(ownList);
        platform.gpu = {gpu};
        scheduler = std::make_unique<TickScheduler>(*clock);
        sampler = std::make_unique<ProcessSampler>(background, *list, *clock, icons);
        context.emplace(AppContext{platform, background, *scheduler, store, center, global, bar,
                                   nullptr, [](const QString&) {}, [] {}});
        graphics.emplace(platform.gpu);
        module = std::make_unique<GPUModule>(*context, settings, *sampler, *graphics);
        module->onImageChanged = [this] { ++images; };
        module->startEmbedded();
    }
    ~GPUModuleTest() override {
        gpu->hangs = false;
        module->stop();
    }

    void after(double seconds) {
        clock->now += seconds;
        module->tick();
    }
    // Whatever is under way has come by then.
    static void pause() {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 50) {
            QCoreApplication::processEvents();
        }
    }
    // The list once all names are found.
    QList<ProcStat> apps(qsizetype count) {
        QElapsedTimer timer;
        timer.start();
        while (module->viewModel().topApps.value().size() != count && timer.elapsed() < 10'000) {
            QCoreApplication::processEvents();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return module->viewModel().topApps.value();
    }
    QImage square() {
        return module->menubarImage({Appearance::Dark, ImageShape::Square, 1, 22})->image;
    }

    std::shared_ptr<FakeGPU> gpu = std::make_shared<FakeGPU>();
    Platform platform = makeNullPlatform();
    FakeClock* clock;
    FakeProcesses* list;
    AppIcons icons{SystemRoots()};
    Background background;
    DefaultsStore store{QStringLiteral("/nonexistent/settings"), nullptr,
                        DefaultsStore::Access::ReadOnly};
    NotificationCenter center;
    std::unique_ptr<TickScheduler> scheduler;
    GlobalSettings global{store, center};
    GPUSettings settings{store, center, global};
    NoOrder order;
    OffscreenBar bar{order};
    std::unique_ptr<ProcessSampler> sampler;
    std::optional<AppContext> context;
    std::optional<GPUSampler> graphics;
    std::unique_ptr<GPUModule> module;
    int images = 0;
};

TEST_F(GPUModuleTest, TopAppsAreTheRatesOfTheTimeSinceTheLastTick) {
    EXPECT_FALSE(gpu->detailed);
    gpu->use({{1, 9e9}, {2, 9e9}});
    after(1);
    module->detailPopoverWillShow();
    EXPECT_TRUE(gpu->detailed);
    pause();
    EXPECT_TRUE(module->viewModel().topApps.value().isEmpty()) << "the first tick shows a spike";
    std::map<int, double> times{{1, 9e9 + 300}, {2, 9e9 - 5}, {3, 7e9}};
    gpu->use(times);
    after(0.5);
    QList<ProcStat> rows = apps(1);
    ASSERT_EQ(rows.size(), 1) << "time that went back, or a client that is new";
    EXPECT_EQ(rows[0].name, QStringLiteral("shop (python)"));
    EXPECT_NEAR(rows[0].value, 600, 1e-3);

    for (int pid = 10; pid < 20; ++pid) {
        times[pid] = 0;
    }
    gpu->use(times);
    after(1);
    for (int pid = 10; pid < 20; ++pid) {
        times[pid] = pid % 2 == 0 ? 100 : pid;
    }
    gpu->use(times);
    after(1);
    rows = apps(8);
    ASSERT_EQ(rows.size(), 8);
    std::vector<int> pids;
    for (const ProcStat& row : rows) {
        pids.push_back(row.id);
    }
    EXPECT_EQ(pids, (std::vector<int>{10, 12, 14, 16, 18, 19, 17, 15}));
    EXPECT_EQ(rows[0].name, QStringLiteral("app")) << "not printable";

    const int before = list->asked;
    gpu->use({{10, 200}, {12, 150}});
    after(1);
    EXPECT_EQ(apps(2)[0].id, 10);
    EXPECT_EQ(list->asked, before) << "known names are asked for again";
    gpu->use({{10, 1e5}, {12, 1e5}});
    after(60);
    EXPECT_TRUE(apps(0).isEmpty()) << "a rate over a suspend";
    module->detailPopoverDidClose();
    gpu->use({{10, 2e5}, {12, 2e5}});
    after(1);
    EXPECT_FALSE(gpu->detailed);
    module->detailPopoverWillShow();
    pause();
    EXPECT_TRUE(apps(0).isEmpty()) << "rates from before it was closed";
}

TEST_F(GPUModuleTest, AShortenedIntervalIsNoGap) {
    settings.intervalOverride = 5.0;
    module->detailPopoverWillShow();
    gpu->use({{1, 0}});
    after(5);
    settings.intervalOverride = 1.0;
    gpu->use({{1, 490}});
    after(4.9);
    EXPECT_EQ(gpu->interval, 5) << "the source judges its counters by this";
    ASSERT_EQ(apps(1).size(), 1);
    EXPECT_NEAR(module->viewModel().topApps.value()[0].value, 100, 1e-6);
    gpu->use({{1, 5000}});
    after(3.1);
    EXPECT_EQ(gpu->interval, 1);
    EXPECT_TRUE(apps(0).isEmpty());
}

TEST_F(GPUModuleTest, NamesThatAreOnTheirWayWhenItCloses) {
    gpu->use({{1, 0}});
    module->detailPopoverWillShow();
    gpu->use({{1, 5}});
    after(1);
    module->detailPopoverDidClose();
    pause();
    EXPECT_EQ(list->asked, 1);
    EXPECT_TRUE(module->viewModel().topApps.value().isEmpty());
}

TEST_F(GPUModuleTest, StatesAreToldApart) {
    GPUAccelerator sleeper = card("Sleeper", 0, 0);
    sleeper.asleep = true;
    GPUAccelerator stale = card("Stale", {});
    stale.stale = true;
    const GPUAccelerator mute = card("Mute", {});
    const struct {
        std::vector<GPUAccelerator> cards;
        QString text;
        double utilization;
    } cases[] = {
        {{card("Radeon", 40)}, QStringLiteral("GPU 40 %"), 0.4},
        {{card("Radeon", 1e300)}, QStringLiteral("GPU 100 %"), 1},
        {{card("Idle", 0), sleeper, stale}, QStringLiteral("GPU 20 %"), 0.2},
        {{sleeper, stale}, QStringLiteral("GPU not responding"), 0},
        {{card("Radeon", 40)}, QStringLiteral("GPU 40 %"), 0.4},
        {{mute}, QStringLiteral("GPU load unknown"), 0.4},
        {{}, QStringLiteral("No GPU found"), 0.4},
        {{sleeper}, QStringLiteral("GPU asleep"), 0},
    };
    std::size_t grown = module->viewModel().history.value().size();
    std::set<std::string> squares;
    for (const auto& row : cases) {
        gpu->cards = row.cards;
        after(1);
        EXPECT_EQ(module->valueText(), row.text);
        EXPECT_DOUBLE_EQ(module->viewModel().history.value().back(), row.utilization)
            << row.text.toStdString();
        EXPECT_EQ(module->viewModel().history.value().size(), ++grown);
        const QImage image = square();
        squares.emplace(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes());
    }
    EXPECT_EQ(squares.size(), 6u) << "two unlike states look alike in a square cell";
}

TEST_F(GPUModuleTest, ResidencyReplacesTheUtilization) {
    gpu->cards[0].residency = {{"GPUPH", {{"OFF", 0}, {"P1", 0}}}};
    after(1);
    EXPECT_DOUBLE_EQ(module->viewModel().stats.value().utilization, 0.25);
    gpu->cards[0].residency = {{"GPUPH", {{"OFF", 100}, {"P1", 900}}}};
    after(1);
    EXPECT_DOUBLE_EQ(module->viewModel().stats.value().utilization, 0.9);
    EXPECT_DOUBLE_EQ(module->viewModel().stats.value().renderer, 0.2);
}

// The second reading comes by itself, however long the interval is.
TEST_F(GPUModuleTest, TheFirstFigureIsMeasured) {
    settings.intervalOverride = 60.0;
    gpu->cards[0].measured = false;
    GPUModule item(*context, settings, *sampler, *graphics);
    clock->now += 1;
    item.start();
    EXPECT_EQ(item.valueText(), QStringLiteral("GPU —"));
    EXPECT_TRUE(item.statusValues()[QStringLiteral("utilization")].isNull());
    EXPECT_FALSE(item.isReady());
    gpu->cards = {card("Radeon", 60)};
    clock->now += 0.25;
    QElapsedTimer timer;
    timer.start();
    while (bar.text().isEmpty() && timer.elapsed() < 10'000) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_EQ(bar.text(), QStringLiteral("GPU 60 %"));
    item.stop();
}

TEST_F(GPUModuleTest, AnImageForAChangeOnly) {
    const int before = images;
    after(1);
    EXPECT_EQ(images, before);
    gpu->cards.clear();
    after(1);
    EXPECT_EQ(images, before + 1);
}

// The test would not end if a tick waited for it.
TEST_F(GPUModuleTest, ASourceThatHangsHoldsNothingUp) {
    gpu->slow = true;
    for (int tick = 0; tick < 70; ++tick) {
        after(0.25);
    }
    EXPECT_EQ(module->valueText(), QStringLiteral("GPU not responding"));
    const auto history = module->viewModel().history.value();
    EXPECT_EQ(history.size(), static_cast<std::size_t>(GPUModule::historyCap));
    EXPECT_DOUBLE_EQ(history.back(), 0.25);
}

// The item and the GPU part of the combined item, in one process with one driver.
TEST_F(GPUModuleTest, TwoItemsOnOneSource) {
    GPUModule part(*context, settings, *sampler, *graphics);
    gpu->slow = true;
    gpu->hangs = false;
    part.startEmbedded();
    for (int round = 0; round < 200; ++round) {
        after(0.25);
        part.tick();
        if (round % 40 == 20) {
            part.stopEmbedded();
            part.startEmbedded();
        }
        std::this_thread::sleep_for(std::chrono::microseconds(round % 5 * 200));
    }
    EXPECT_EQ(gpu->overlaps, 0);
    EXPECT_EQ(part.valueText(), QStringLiteral("GPU 25 %"));
    EXPECT_EQ(module->valueText(), part.valueText());

    // Off while the driver hangs: at once, however often; on again: not a second time into it.
    gpu->hangs = true;
    after(0.25);
    after(0.25);
    qint64 quickest = 1000;  // ms
    for (int round = 0; round < 5; ++round) {
        part.startEmbedded();
        part.tick();
        QElapsedTimer timer;
        timer.start();
        part.stopEmbedded();
        quickest = std::min(quickest, timer.elapsed());
    }
    EXPECT_LT(quickest, 100) << "the main thread waits for the driver";
    EXPECT_EQ(gpu->overlaps, 0);
}

TEST_F(GPUModuleTest, PopoverFollowsTheMachine) {
    gpu->cards = {card("Radeon", 62.6)};
    module->detailPopoverWillShow();
    const Popover* popover = module->detailPopover();
    const auto texts = [&] {
        QStringList shown;
        for (const Piece* piece : popover->findChildren<Piece*>()) {
            if (piece->isVisibleTo(popover) && !piece->accessibleName().isEmpty()) {
                shown << piece->accessibleName() + piece->accessibleDescription();
            }
        }
        return shown.join(u'|').toStdString();
    };
    EXPECT_EQ(texts(),
              "GPU 63%Radeon|GPU utilisation, history|Renderer 20%|Tiler 10%|"
              "In use 1.5\u2009KB|TOP APPS|Sampling…")
        << "nobody can know yet";
    after(1);
    EXPECT_NE(texts().find("TOP APPS|No GPU activity"), std::string::npos) << texts();
    GPUAccelerator sleeper = card("Arc", 0, 0);
    sleeper.asleep = true;
    gpu->cards.push_back(sleeper);
    after(1);
    EXPECT_NE(texts().find("|ALL GPUS|Radeon 63%|Arc Asleep|TOP APPS"), std::string::npos)
        << texts();
    gpu->cards.clear();
    after(1);
    EXPECT_EQ(texts(), "GPU |No GPU found");
    gpu->health.failed("cannot read /sys/class/drm: Permission denied");
    after(1);
    EXPECT_EQ(texts(), "GPU |Cannot read /sys/class/drm: Permission denied.");
    EXPECT_EQ(module->valueText(),
              QStringLiteral("GPU — (cannot read /sys/class/drm: Permission denied)"));
    gpu->cards = {card("Mute", {})};
    gpu->health.succeeded();
    after(1);
    EXPECT_EQ(texts().find("GPU —Mute"), 0u) << texts();
    EXPECT_EQ(texts().find('%'), std::string::npos) << texts();
}

}  // namespace
}  // namespace vostel
