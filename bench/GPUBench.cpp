// One GPU tick on a machine with 400 processes: at most 1 ms while nobody looks, 10 ms while
// somebody does. Both are the time of the source; of a slow one the main thread sees the hand-over
// alone. "Walk" is what a card without a counter of its own costs every 5 s.
#include <benchmark/benchmark.h>

#include <QApplication>

#include "core/Background.h"
#include "core/DefaultsStore.h"
#include "core/GlobalSettings.h"
#include "monitors/gpu/GPUModule.h"
#include "monitors/gpu/GPUMonitor.h"
#include "monitors/gpu/GPUSampler.h"
#include "platform/Platform.h"
#include "platform/linux/DrmGPUSource.h"
#include "platform/linux/DrmWalker.h"
#include "platform/linux/NvidiaGPUSource.h"
#include "platform/tests/GPUTree.h"
#include "statusbar/OffscreenBar.h"

namespace vostel {
namespace {

// 400 processes with 40 descriptors each, 30 of them with two of the GPU.
const GPUTree& desktop() {
    static const GPUTree tree;
    static const bool built = [] {
        tree.add({.device = "0000:03:00.0",
                  .driver = "amdgpu",
                  .attributes = {{"gpu_busy_percent", "37\n"},
                                 {"mem_busy_percent", "3\n"},
                                 {"mem_info_vram_used", "2000000000\n"},
                                 {"mem_info_vram_total", "8000000000\n"}}});
        tree.add({.device = "0000:00:02.0",
                  .driver = "i915",
                  .card = 1,
                  .render = 129,
                  .attributes = {{"drm/card1/gt/gt0/rc6_residency_ms", "12345\n"}}});
        std::string fdinfo = "pos:\t0\nflags:\t02100002\ndrm-driver:\tamdgpu\ndrm-client-id:\t%\n";
        for (const char* more :
             {"drm-total-vram:\t10 KiB\n", "drm-resident-vram:\t10 KiB\n", "drm-memory-vram:\t9\n",
              "drm-engine-gfx:\t123456789 ns\n", "drm-engine-compute:\t5 ns\n",
              "drm-engine-dec:\t77 ns\n", "drm-engine-enc:\t77 ns\n"}) {
            fdinfo += more;
        }
        for (int pid = 1000; pid < 1400; ++pid) {
            const std::string folder = "proc/" + std::to_string(pid) + "/";
            tree.file(folder + "comm", "process\n");
            for (int descriptor = 0; descriptor < 38; ++descriptor) {
                tree.link(folder + "fd/" + std::to_string(descriptor), "socket:[12345]");
            }
            for (int descriptor = 38; descriptor < 40 && pid < 1030; ++descriptor) {
                std::string text = fdinfo;
                text.replace(text.find('%'), 1, std::to_string(pid * 2 + descriptor));
                tree.holds(pid, "client", descriptor, "renderD128", text);
            }
        }
        return true;
    }();
    benchmark::DoNotOptimize(built);
    return tree;
}

void tick(benchmark::State& state, const SystemRoots& roots, bool detailed) {
    DrmGPUSource drm(roots);
    NvidiaGPUSource nvidia(roots, "/nonexistent");
    double now = 0;
    const auto once = [&] {
        ++now;
        const GPURequest request{.now = now, .interval = 1, .detailed = detailed};
        for (GPUSource* source :
             {static_cast<GPUSource*>(&drm), static_cast<GPUSource*>(&nvidia)}) {
            benchmark::DoNotOptimize(source->isSlow(request));
            benchmark::DoNotOptimize(
                GPUMonitor::sampleIORegistry(source->read(request).accelerators));
        }
    };
    for (int i = 0; i < 10; ++i) {
        once();  // what is new is looked through more often
    }
    for (auto _ : state) {
        once();
    }
}

void closedTick(benchmark::State& state) {
    tick(state, desktop().roots(), false);
}
BENCHMARK(closedTick)->Unit(benchmark::kMicrosecond);

void detailedTick(benchmark::State& state) {
    tick(state, desktop().roots(), true);
}
BENCHMARK(detailedTick)->Unit(benchmark::kMicrosecond);

void realClosedTick(benchmark::State& state) {
    tick(state, SystemRoots::ofThisMachine(), false);
}
BENCHMARK(realClosedTick)->Unit(benchmark::kMicrosecond);

// `range(0)` seconds between two walks: 1 while somebody looks, 5 else.
void walk(benchmark::State& state, const SystemRoots& roots) {
    DrmWalker walker(roots.proc);
    const std::map<std::string, std::string> nodes{{"renderD128", "card"}, {"card0", "card"}};
    const bool someoneLooks = state.range(0) == 1;
    double now = 0;
    const auto once = [&] {
        now += static_cast<double>(state.range(0));
        benchmark::DoNotOptimize(walker.walk(now, someoneLooks, nodes));
    };
    for (int i = 0; i < 10; ++i) {
        once();
    }
    for (auto _ : state) {
        once();
    }
}
void builtWalk(benchmark::State& state) {
    walk(state, desktop().roots());
}
void realWalk(benchmark::State& state) {
    walk(state, SystemRoots::ofThisMachine());
}
BENCHMARK(builtWalk)->Arg(1)->Arg(5)->Unit(benchmark::kMicrosecond);
BENCHMARK(realWalk)->Arg(1)->Arg(5)->Unit(benchmark::kMicrosecond);

// The desktop's source without its thread, and with a load that changes at every reading.
class Unsteady : public GPUSource {
  public:
    bool isSlow(const GPURequest&) override { return false; }
    GPUReading read(const GPURequest& request) override {
        GPUReading reading = drm.read(request);
        for (GPUAccelerator& accelerator : reading.accelerators) {
            accelerator.statistics.emplace().device = load = load > 90 ? 0 : load + 7;
        }
        return reading;
    }

  private:
    DrmGPUSource drm{desktop().roots()};
    double load = 0;
};

class BenchClock : public Clock {
  public:
    double seconds() const override { return ++now; }
    std::chrono::system_clock::time_point calendar() const override { return {}; }

  private:
    mutable double now = 0;
};

class NoOrder : public ItemOrderStore {
  public:
    QStringList itemOrder() const override { return {}; }
    void setItemOrder(const QStringList&) override {}
};

// The item's whole tick: source, figures, image; `range(0)`: the popover is open.
void moduleTick(benchmark::State& state) {
    Platform platform = makeNullPlatform();
    platform.clock = std::make_unique<BenchClock>();
    platform.gpu = {std::make_shared<Unsteady>()};
    AppIcons icons{SystemRoots()};
    Background background;
    ProcessSampler processes(background, *platform.processes, *platform.clock, icons);
    DefaultsStore store(QStringLiteral("/nonexistent/settings"), nullptr,
                        DefaultsStore::Access::ReadOnly);
    NotificationCenter center;
    TickScheduler scheduler(*platform.clock);
    GlobalSettings global(store, center);
    GPUSettings settings(store, center, global);
    NoOrder order;
    OffscreenBar bar(order);
    AppContext context{platform, background, scheduler, store, center,
                       global,   bar,        nullptr,   {},    {}};
    GPUSampler sampler(platform.gpu);
    GPUModule module(context, settings, processes, sampler);
    module.start();
    if (state.range(0) != 0) {
        module.detailPopover();
        module.detailPopoverWillShow();
    }
    for (int i = 0; i < 10; ++i) {
        module.tick();
    }
    for (auto _ : state) {
        module.tick();
    }
    module.stop();
}
BENCHMARK(moduleTick)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vostel

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
