// The CPU and the memory item as a user and the rest of the program see them, on a machine whose
// counters, processes and time are moved by hand.

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include "app/AppDelegate.h"
#include "app/ModuleTable.h"
#include "item/ShownItem.h"
#include "statusbar/OffscreenBar.h"
#include "ui/Popover.h"

namespace vostel {
namespace {

constexpr double gibi = 1024.0 * 1024 * 1024;

// Workers look at it, too.
struct HandClock : Clock {
    double seconds() const override { return now; }
    std::chrono::system_clock::time_point calendar() const override { return {}; }
    std::atomic<double> now = 1000;
};

// Processors that were busy for these shares of the time since the last reading.
struct ScriptedCPU : CPUSource {
    std::vector<std::int32_t> ticks() override {
        counters.resize(loads.size() * 4);
        for (std::size_t i = 0; i < loads.size(); ++i) {
            const auto busy = static_cast<std::int32_t>(loads[i] * 100);
            counters[i * 4] += busy;
            counters[i * 4 + 2] += 100 - busy;
        }
        return counters;
    }
    CoreCounts coreCounts() override { return kinds; }
    int activeProcessorCount() override { return static_cast<int>(loads.size()); }

    std::vector<double> loads{1, 0.5, 0, 0.5};
    CoreCounts kinds;
    std::vector<std::int32_t> counters;
};

struct ScriptedMemory : MemorySource {
    std::optional<MemoryCounters> counters() override { return held; }
    double physicalMemory() override { return 16 * gibi; }
    MemoryCounters held{1 * gibi, 2 * gibi, 4 * gibi};
};

// Twelve processes: number n uses n percent of a processor and holds 20 - n GiB. Their names end
// with the number of the reading.
struct ScriptedProcesses : ProcessSource {
    explicit ScriptedProcesses(HandClock& time) : clock(time) {}
    bool read(std::vector<ProcessRecord>& records) override {
        while (held) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        const std::lock_guard guard(lock);
        readings.push_back(clock.now);
        records.clear();
        for (int n = 1; n <= 12; ++n) {
            records.push_back(
                {.pid = n,
                 .startSeconds = 1,
                 .cpuSeconds = n * clock.now / 100,
                 .residentBytes = static_cast<std::uint64_t>((20 - n) * gibi),
                 .comm = "app" + std::to_string(n) + "-" + std::to_string(readings.size())});
        }
        clock.now = clock.now + takes;
        return true;
    }
    std::optional<ProcessDetails> details(std::int32_t, double) override { return std::nullopt; }
    // When it was read.
    std::vector<double> times() {
        const std::lock_guard guard(lock);
        return readings;
    }

    HandClock& clock;
    std::atomic<bool> held = false;
    std::atomic<double> takes = 0;  // seconds that a reading takes
    std::mutex lock;
    std::vector<double> readings;
};

struct Machine {
    Machine() {
        auto ownClock = std::make_unique<HandClock>();
        auto ownCPU = std::make_unique<ScriptedCPU>();
        auto ownMemory = std::make_unique<ScriptedMemory>();
        clock = ownClock.get();
        cpu = ownCPU.get();
        memory = ownMemory.get();
        auto ownProcesses = std::make_unique<ScriptedProcesses>(*clock);
        processes = ownProcesses.get();
        platform.clock = std::move(ownClock);
        platform.cpu = std::move(ownCPU);
        platform.memory = std::move(ownMemory);
        platform.processes = std::move(ownProcesses);
    }

    Platform platform = makeNullPlatform();
    HandClock* clock;
    ScriptedCPU* cpu;
    ScriptedMemory* memory;
    ScriptedProcesses* processes;
};

class SystemItemsTest : public testing::Test {
  protected:
    SystemItemsTest() {
        for (auto* interval : {&services.cpu.intervalOverride, &services.memory.intervalOverride}) {
            *interval = 0.25;
        }
        services.cpu.showPerCoreBars = false;
        services.cpu.splitCores = false;
        for (ModuleSettings* each :
             std::initializer_list<ModuleSettings*>{&services.cpu, &services.memory}) {
            each->label = QString();
            each->foregroundHexOverride = QStringLiteral("#00FF00FF");
            each->backgroundHexOverride = QStringLiteral("#0000FFFF");
        }
    }
    ~SystemItemsTest() override { machine.processes->held = false; }

    void start(const char* id) {
        name = QLatin1String(id);
        delegate.moduleManager->setEnabled(true, name);
    }
    ShownItem& item() { return *dynamic_cast<ShownItem*>(delegate.moduleManager->running(name)); }
    // Moves time there; timers that are due then fire.
    void at(double time) {
        machine.clock->now = time;
        services.scheduler.fire();
        QCoreApplication::processEvents();
    }
    void after(double seconds) { at(machine.clock->now + seconds); }
    void ticks(int count) {
        for (int i = 0; i < count; ++i) {
            after(0.25);
        }
    }
    static bool until(const std::function<bool()>& condition) {
        QElapsedTimer timer;
        timer.start();
        while (!condition() && timer.elapsed() < 10'000) {
            QCoreApplication::processEvents();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return condition();
    }
    void click() { bar.click(QStringLiteral("vostel.") + name); }
    Popover& popover() {
        return *dynamic_cast<EmbeddableModule&>(*delegate.moduleManager->running(name))
                    .detailPopover();
    }
    // What a screen reader finds in the popover, from top to bottom.
    std::string texts() {
        QStringList shown;
        for (const QWidget* piece : popover().findChildren<QWidget*>()) {
            if (piece->isVisibleTo(&popover()) && !piece->accessibleName().isEmpty()) {
                shown << piece->accessibleName();
                if (!piece->accessibleDescription().isEmpty()) {
                    shown.last() += QStringLiteral(": ") + piece->accessibleDescription();
                }
            }
        }
        return shown.join(u'|').replace(QChar(0x2009), u' ').toStdString();
    }
    bool shows(const std::string& text) { return texts().find(text) != std::string::npos; }
    // What it looks like; one black pixel when there is no such piece.
    QImage picture(const char* accessibleName) {
        for (QWidget* each : popover().findChildren<QWidget*>()) {
            if (each->accessibleName() == QLatin1String(accessibleName)) {
                return each->grab().toImage();
            }
        }
        ADD_FAILURE() << "no " << accessibleName << " in " << texts();
        QImage none(1, 1, QImage::Format_RGB32);
        none.fill(Qt::black);
        return none;
    }
    QImage image() {
        return item().menubarImage({Appearance::Dark, ImageShape::Wide, 1, 22})->image;
    }
    static bool isGreen(const QImage& image, int x, int y) {
        const QColor color = image.pixelColor(x, y);
        return color.green() > color.red() + 20;
    }
    // The heights of a meter's bars from the left, in percent.
    std::vector<int> bars(const char* meter) {
        const QImage drawn = picture(meter);
        const auto isLit = [&](int x, int y) {
            const QColor color = drawn.pixelColor(x, y);
            return std::abs(color.green() - color.red()) > 20;
        };
        std::vector<int> heights;
        int start = -1;
        for (int x = 0; x <= drawn.width(); ++x) {
            const bool lit = x < drawn.width() && isLit(x, drawn.height() - 3);
            if (lit && start < 0) {
                start = x;
            } else if (!lit && start >= 0) {
                int height = 0;
                for (int y = 0; y < drawn.height(); ++y) {
                    height += isLit((start + x) / 2, y) ? 1 : 0;
                }
                heights.push_back(height * 100 / drawn.height());
                start = -1;
            }
        }
        return heights;
    }
    // The graph has the newest tick at its right edge, and sixty of them.
    void expectHistory(const char* graphName, const std::function<void(bool full)>& load) {
        click();
        const auto graph = [&] { return picture(graphName); };
        load(false);
        ticks(60);
        EXPECT_FALSE(isGreen(graph(), 250, 8));
        load(true);
        ticks(15);
        EXPECT_TRUE(isGreen(graph(), 250, 8));
        EXPECT_TRUE(isGreen(graph(), 298, 8)) << "the newest is not at the right";
        EXPECT_FALSE(isGreen(graph(), 200, 8));
        ticks(43);
        EXPECT_FALSE(isGreen(graph(), 1, 8)) << "fewer than 60";
        ticks(2);
        EXPECT_TRUE(isGreen(graph(), 1, 8)) << "more than 60";
    }
    // The popover shows what that reading of the processes gave, and nothing is under way.
    void expectAnswer(int reading) {
        const std::string row = "app8-" + std::to_string(reading) + ',';
        ASSERT_TRUE(until([&] { return shows(row); })) << texts();
    }
    // Processes are read for a popover that opens, then every two seconds while it is open. Where
    // rates are shown, the first answer takes two readings.
    void expectProcessesOnlyWhileOpen(int firstReadings) {
        ticks(20);
        machine.processes->takes = firstReadings > 1 ? 0.5 : 0;
        click();
        EXPECT_TRUE(shows("TOP APPS|Sampling…")) << texts();
        int reading = firstReadings;
        ASSERT_NO_FATAL_FAILURE(expectAnswer(reading));
        machine.processes->takes = 0;
        at(1006.75);
        at(1007);
        ASSERT_NO_FATAL_FAILURE(expectAnswer(++reading));
        click();  // closes
        at(1009.25);
        at(1012);
        click();
        ASSERT_NO_FATAL_FAILURE(expectAnswer(++reading));
        click();
        at(1013);
        click();  // again, within two seconds
        ASSERT_NO_FATAL_FAILURE(expectAnswer(++reading));
        std::vector<double> expected{1005, 1007, 1012, 1013};
        if (firstReadings > 1) {
            expected.insert(expected.begin() + 1, 1005.5);
        }
        EXPECT_EQ(machine.processes->times(), expected);
    }
    // One request at a time, and one that is answered when its item is gone does no harm.
    void expectOneRequestAtATime() {
        machine.processes->held = true;
        click();
        at(1003);
        at(1006);
        machine.processes->held = false;
        ASSERT_NO_FATAL_FAILURE(expectAnswer(1));
        at(1008.5);
        ASSERT_NO_FATAL_FAILURE(expectAnswer(2));
        EXPECT_EQ(machine.processes->times(), (std::vector<double>{1006, 1008.5}));
        machine.processes->held = true;
        at(1011);
        delegate.moduleManager->setEnabled(false, name);
        machine.processes->held = false;
        EXPECT_TRUE(until([&] { return machine.processes->times().size() == 3; }));
    }

    QTemporaryDir folder;
    Machine machine;
    AppServices services{std::move(machine.platform), folder.filePath(QStringLiteral("s.plist"))};
    ItemOrder order{services.defaults, itemNames()};
    OffscreenBar bar{order};
    AppDelegate delegate{services, bar};
    QString name;
};

TEST_F(SystemItemsTest, CPUFiguresAreTheSameEverywhere) {
    services.cpu.showSingleBar = true;
    start("cpu");
    click();
    machine.cpu->loads = {1, 0.5, 0.2, 0.5};
    after(1);
    EXPECT_EQ(item().valueText(), QStringLiteral("CPU 55 %"));
    EXPECT_EQ(bar.items().front()->title(), QStringLiteral("CPU usage"));
    EXPECT_EQ(bar.items().front()->value(), QStringLiteral("CPU 55 %"));
    const QVariantMap values = item().statusValues();
    EXPECT_DOUBLE_EQ(values[QStringLiteral("overall")].toDouble(), 0.55);
    EXPECT_EQ(values[QStringLiteral("perCore")].toList(), (QVariantList{1.0, 0.5, 0.2, 0.5}));
    EXPECT_TRUE(shows("CPU 55%|Overall load, history|PER CORE (4)|Cores|TOP APPS")) << texts();
    EXPECT_EQ(bars("Cores"), (std::vector<int>{100, 50, 20, 50}));
    const QImage single = image();
    ASSERT_EQ(single.size(), QSize(8, 22));
    EXPECT_TRUE(isGreen(single, 4, 11));
    EXPECT_FALSE(isGreen(single, 4, 8));
    // A reading right after another says nothing: the figures stay.
    machine.cpu->loads = {0, 0, 0, 0};
    machine.clock->now = machine.clock->now + 0.05;
    item().tick();
    EXPECT_EQ(item().valueText(), QStringLiteral("CPU 55 %"));
    after(1);
    EXPECT_EQ(item().valueText(), QStringLiteral("CPU 0 %"));
}

TEST_F(SystemItemsTest, CPUHistoryIsTheLoadOfTheLastSixtyTicks) {
    start("cpu");
    ASSERT_NO_FATAL_FAILURE(expectHistory("Overall load, history", [this](bool full) {
        machine.cpu->loads.assign(4, full ? 1 : 0);
    }));
    services.cpu.showSingleBar = false;
    services.cpu.showGraph = true;
    EXPECT_TRUE(isGreen(image(), 1, 8)) << "the graph of the bar has another history";
    machine.cpu->loads.assign(4, 0);
    ticks(30);
    EXPECT_TRUE(isGreen(image(), 10, 8));
    EXPECT_FALSE(isGreen(image(), 26, 8));
}

// Catches a popover that keeps the split of the moment when it was made.
TEST_F(SystemItemsTest, CPUPopoverFollowsSettingsAndProcessors) {
    using Bars = std::vector<int>;
    machine.cpu->kinds = {3, 1};
    machine.cpu->loads = {1, 0.5, 0.25, 0.75};  // the efficient one first
    services.cpu.efficiencyHex = QStringLiteral("#FF0000FF");
    start("cpu");
    click();
    after(1);
    const auto expectTogether = [this](const char* when) {
        EXPECT_TRUE(shows("|PER CORE (4)|Cores|TOP APPS|")) << when << ": " << texts();
        EXPECT_EQ(bars("Cores"), (Bars{100, 50, 25, 75})) << when;
    };
    const auto expectApart = [this](const char* when) {
        EXPECT_TRUE(
            shows("|PERFORMANCE (3)|Performance cores|EFFICIENCY (1)|Efficiency cores|"
                  "TOP APPS|"))
            << when << ": " << texts();
        EXPECT_EQ(bars("Performance cores"), (Bars{50, 25, 75})) << when;
        EXPECT_EQ(bars("Efficiency cores"), Bars{100}) << when;
    };
    const auto change = [](Setting<bool>& setting, bool value) {
        setting = value;
        QCoreApplication::processEvents();
    };
    expectTogether("at first");
    change(services.cpu.splitCores, true);
    expectTogether("the item shows no bars that could be split");
    change(services.cpu.showPerCoreBars, true);
    expectApart("while open");
    const auto color = [&] { return picture("Efficiency cores").pixelColor(9, 20); };
    EXPECT_EQ(color(), QColor(Qt::red));
    services.cpu.efficiencyHex = QStringLiteral("#00FFFFFF");
    QCoreApplication::processEvents();
    EXPECT_EQ(color(), QColor(Qt::cyan));
    click();
    change(services.cpu.splitCores, false);
    click();  // the same popover as before
    expectTogether("while closed");
    change(services.cpu.splitCores, true);
    machine.cpu->kinds = {};  // the processors of one kind go
    machine.cpu->loads = {0.5, 0.5};
    after(1);
    after(1);
    EXPECT_TRUE(shows("|PER CORE (2)|Cores|TOP APPS|")) << texts();
    EXPECT_EQ(bars("Cores"), (Bars{50, 50}));
    machine.cpu->kinds = {3, 1};
    machine.cpu->loads = {1, 0.5, 0.25, 0.75};
    after(1);
    after(1);
    expectApart("when they come back");
}

TEST_F(SystemItemsTest, CPUImageFollowsTheProcessors) {
    services.cpu.showSingleBar = false;
    services.cpu.showPerCoreBars = true;
    start("cpu");
    EXPECT_EQ(image().width(), 14);
    machine.cpu->kinds = {4, 2};
    machine.cpu->loads.assign(6, 0.5);
    services.cpu.splitCores = true;
    QCoreApplication::processEvents();
    EXPECT_EQ(image().width(), 24);
    services.cpu.label = QStringLiteral("A longer label");
    EXPECT_GT(image().width(), 24);
}

TEST_F(SystemItemsTest, CPUProcessesAreReadOnlyForAnOpenPopover) {
    start("cpu");
    expectProcessesOnlyWhileOpen(2);
    EXPECT_TRUE(
        shows("TOP APPS|app12-5, 12%|app11-5, 11%|app10-5, 10%|app9-5, 9%|app8-5, 8%|app7-5, 7%|"
              "app6-5, 6%|app5-5, 5%|"))
        << texts();
    EXPECT_FALSE(shows("app4"));
}

TEST_F(SystemItemsTest, MemoryFiguresAreTheSameEverywhere) {
    start("memory");
    click();
    const struct {
        const char* what;
        MemoryCounters held;
        const char* value;
        const char* popover;
        double used;
        int row;  // of the image, the highest that is filled
    } rows[] = {
        {"active, wired and compressed",
         {1 * gibi, 2 * gibi, 5 * gibi},
         "Memory 50 % (8.0 GB of 16.0 GB)",
         "Memory 50%: Used 8.0 GB of 16.0 GB|",
         8 * gibi,
         11},
        {"active",
         {4 * gibi, 0, 0},
         "Memory 25 % (4.0 GB of 16.0 GB)",
         "Memory 25%: Used 4.0 GB of 16.0 GB|",
         4 * gibi,
         17},
        {"wired",
         {0, 4 * gibi, 0},
         "Memory 25 % (4.0 GB of 16.0 GB)",
         "Memory 25%: Used 4.0 GB of 16.0 GB|",
         4 * gibi,
         17},
        {"compressed",
         {0, 0, 12 * gibi},
         "Memory 75 % (12.0 GB of 16.0 GB)",
         "Memory 75%: Used 12.0 GB of 16.0 GB|",
         12 * gibi,
         6},
        {"more than there is",
         {8 * gibi, 8 * gibi, 4 * gibi},
         "Memory 100 % (20.0 GB of 16.0 GB)",
         "Memory 100%: Used 20.0 GB of 16.0 GB|",
         20 * gibi,
         0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        machine.memory->held = row.held;
        after(1);
        const QString value = item().valueText().replace(QChar(0x2009), u' ');
        EXPECT_EQ(value, QLatin1String(row.value));
        EXPECT_EQ(bar.items().front()->title(), QStringLiteral("Memory usage"));
        EXPECT_EQ(bar.items().front()->value(), item().valueText());
        EXPECT_EQ(item().statusValues()[QStringLiteral("usedBytes")], row.used);
        EXPECT_EQ(item().statusValues()[QStringLiteral("totalBytes")], 16 * gibi);
        EXPECT_TRUE(shows(row.popover)) << texts();
        const QImage drawn = image();
        ASSERT_EQ(drawn.size(), QSize(8, 22));
        EXPECT_TRUE(isGreen(drawn, 4, row.row));
        EXPECT_FALSE(row.row > 0 && isGreen(drawn, 4, row.row - 2));
    }
}

TEST_F(SystemItemsTest, MemoryHistoryIsTheUsedShareOfTheLastSixtyTicks) {
    start("memory");
    expectHistory("Used memory, history",
                  [this](bool full) { machine.memory->held = {0, 0, full ? 16 * gibi : 0}; });
}

TEST_F(SystemItemsTest, MemoryProcessesAreReadOnlyForAnOpenPopover) {
    start("memory");
    expectProcessesOnlyWhileOpen(1);
    EXPECT_TRUE(
        shows("TOP APPS|app1-4, 19.0 GB|app2-4, 18.0 GB|app3-4, 17.0 GB|app4-4, 16.0 GB|"
              "app5-4, 15.0 GB|app6-4, 14.0 GB|app7-4, 13.0 GB|app8-4, 12.0 GB|"))
        << texts();
    EXPECT_FALSE(shows("app9"));
}

TEST_F(SystemItemsTest, OneRequestForProcessesAtATime) {
    start("memory");
    expectOneRequestAtATime();
}

TEST_F(SystemItemsTest, WhatReadsProcessesAlsoWorksEmbedded) {
    Catalog catalog = makeCatalog(services, delegate.context);
    for (const CatalogEntry& entry : catalog) {
        if (entry.id != QStringLiteral("cpu") && entry.id != QStringLiteral("memory")) {
            continue;
        }
        const auto module = entry.make();
        int images = 0;
        module->onImageChanged = [&] { ++images; };
        module->startEmbedded();
        EXPECT_EQ(bar.items().size(), 0U);
        const std::size_t before = machine.processes->times().size();
        const int drawn = images;
        after(1);
        EXPECT_GT(images, drawn) << entry.id.toStdString();
        module->detailPopoverWillShow();
        EXPECT_TRUE(until([&] { return machine.processes->times().size() > before; }));
        module->stopEmbedded();
    }
}

}  // namespace
}  // namespace vostel
