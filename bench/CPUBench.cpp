// One tick of the CPU item (reading, history, image) with 16 processors and first-run settings: at
// most 150 microseconds.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTemporaryDir>

#include "core/Background.h"
#include "core/FirstRunDefaults.h"
#include "core/tests/FakeClock.h"
#include "monitors/cpu/CPUModule.h"
#include "monitors/process/AppIcons.h"
#include "platform/Platform.h"
#include "platform/linux/ProcStatSource.h"
#include "platform/tests/TemporaryTree.h"
#include "statusbar/OffscreenBar.h"

namespace {

using namespace vostel;

constexpr int processors = 16;

// Two states of a machine, so that every bar moves with every tick.
std::string statFile(int step) {
    std::string text = "cpu  0 0 0 0 0 0 0 0 0 0\n";
    for (int i = 0; i < processors; ++i) {
        text += "cpu" + std::to_string(i) + " " + std::to_string(1000 + step * (3 + i)) +
                " 12 345 " + std::to_string(90000 + step * 25) + " 6 7 8 9 0 0\n";
    }
    text += "intr 123456789";
    for (int i = 0; i < 500; ++i) {
        text += " 0";
    }
    return text + "\nctxt 1\nbtime 1\nprocesses 1\n";
}

class FixedOrder : public ItemOrderStore {
  public:
    QStringList itemOrder() const override { return {}; }
    void setItemOrder(const QStringList&) override {}
};

void tick(benchmark::State& state) {
    const TemporaryTree tree;
    const SystemRoots roots{
        .proc = tree.root + "/proc", .sys = tree.root + "/sys", .home = {}, .dataDirs = {}};
    tree.write("proc/stat", statFile(0));
    const QTemporaryDir folder;
    DefaultsStore defaults(folder.filePath(QStringLiteral("settings")), nullptr);
    FirstRunDefaults::apply(defaults);
    NotificationCenter center;
    GlobalSettings global(defaults, center);
    CPUSettings settings(defaults, center, global);
    Platform platform = makeNullPlatform();
    auto fake = std::make_unique<FakeClock>();
    FakeClock* clock = fake.get();
    platform.clock = std::move(fake);
    platform.cpu = std::make_unique<ProcStatSource>(roots);
    AppIcons icons(roots);
    Background background;
    ProcessSampler sampler(background, *platform.processes, *platform.clock, icons);
    TickScheduler scheduler(*platform.clock);
    FixedOrder order;
    OffscreenBarOptions options;
    options.scale = static_cast<double>(state.range(0));
    OffscreenBar bar(order, options);
    AppContext context{platform, background, scheduler, defaults, center,
                       global,   bar,        nullptr,   {},       {}};
    CPUModule module(context, settings, sampler);
    module.start();
    int step = 0;
    for (auto _ : state) {
        state.PauseTiming();
        tree.write("proc/stat", statFile(++step));
        clock->now += 0.25;
        state.ResumeTiming();
        module.tick();
    }
}
BENCHMARK(tick)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond)->Iterations(2000)->Repetitions(5);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
