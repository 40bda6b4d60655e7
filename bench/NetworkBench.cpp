// One network tick with 50 interfaces (reading, addresses, selection, image): at most 300
// microseconds.
#include <benchmark/benchmark.h>
#include <sched.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <QApplication>
#include <QTemporaryDir>

#include "core/Background.h"
#include "core/FirstRunDefaults.h"
#include "core/GlobalSettings.h"
#include "core/tests/FakeClock.h"
#include "monitors/network/NetworkImage.h"
#include "monitors/network/NetworkModule.h"
#include "platform/Platform.h"
#include "platform/linux/NetlinkSource.h"
#include "statusbar/OffscreenBar.h"

namespace {

constexpr int pairs = 25;

// An own network namespace with 25 pairs of virtual cables, each end up and with two addresses.
// Needs to be root; with `unshare -Urn` any user is.
void makeInterfaces() {
    static const bool made = [] {
        bool well = unshare(CLONE_NEWNET) == 0;
        for (int i = 0; i < pairs && well; ++i) {
            const std::string a = "a" + std::to_string(i);
            const std::string b = "b" + std::to_string(i);
            const std::string net = "10.9." + std::to_string(i);
            const std::string command = "ip link add " + a + " type veth peer name " + b +
                                        " && ip link set " + a + " up && ip link set " + b +
                                        " up && ip addr add " + net + ".1/30 dev " + a +
                                        " && ip addr add " + net + ".2/30 dev " + b;
            well = std::system(command.c_str()) == 0;
        }
        return well;
    }();
    if (!made) {
        std::fprintf(stderr, "cannot make a network namespace with interfaces: are you root?\n");
        std::exit(1);
    }
}

void readInterfaces(benchmark::State& state) {
    makeInterfaces();
    vostel::NetlinkSource source;
    for (auto _ : state) {
        const auto interfaces = source.interfaces();
        if (interfaces.size() != 2 * pairs) {
            state.SkipWithError("interfaces are missing");
        }
    }
}
BENCHMARK(readInterfaces)->Unit(benchmark::kMicrosecond);

void readAddresses(benchmark::State& state) {
    makeInterfaces();
    vostel::NetlinkSource source;
    for (auto _ : state) {
        const auto addresses = source.addresses();
        if (addresses.size() < 2 * pairs) {
            state.SkipWithError("addresses are missing");
        }
    }
}
BENCHMARK(readAddresses)->Unit(benchmark::kMicrosecond);

class FixedOrder : public vostel::ItemOrderStore {
  public:
    QStringList itemOrder() const override { return {}; }
    void setItemOrder(const QStringList&) override {}
};

// The whole item with first-run settings, its image at the scale of the argument, popover closed
// (1: open, with a row for each interface).
void tick(benchmark::State& state) {
    using namespace vostel;
    makeInterfaces();
    const QTemporaryDir folder;
    DefaultsStore defaults(folder.filePath(QStringLiteral("settings")), nullptr);
    FirstRunDefaults::apply(defaults);
    NotificationCenter center;
    GlobalSettings global(defaults, center);
    NetworkSettings settings(defaults, center, global);
    settings.lookUpWAN = false;
    Background background;
    Platform platform = makeLinuxPlatform(SystemRoots::ofThisMachine());
    auto fake = std::make_unique<FakeClock>();  // a reading sooner than 50 ms repeats the last one
    FakeClock* clock = fake.get();
    platform.clock = std::move(fake);
    TickScheduler scheduler(*platform.clock);
    FixedOrder order;
    OffscreenBarOptions options;
    options.scale = static_cast<double>(state.range(0));
    OffscreenBar bar(order, options);
    AppContext context{platform, background, scheduler, defaults, center,
                       global,   bar,        nullptr,   {},       {}};
    NetworkOutside outside;
    outside.fetchWAN = [](QObject*, const WANIPFetcher::Completion&) {};
    outside.fetchTailscale = [](QObject*, const TailscaleProbe::Completion&) {};
    NetworkModule module(context, settings, outside);
    module.start();
    if (state.range(1) != 0) {
        module.detailPopover()->show();
    }
    for (int i = 0; i < 60; ++i) {
        clock->now += 1;
        module.tick();
    }
    for (auto _ : state) {
        clock->now += 1;
        module.tick();
        if (state.range(1) != 0) {
            QApplication::processEvents();  // what the popover paints
        }
    }
}
BENCHMARK(tick)->Args({1, 0})->Args({2, 0})->Args({2, 1})->Unit(benchmark::kMicrosecond);

// The image alone, with a full graph.
void image(benchmark::State& state) {
    using namespace vostel;
    NetworkImageInput input;
    input.mode = static_cast<DisplayMode>(state.range(0));
    input.style = static_cast<DisplayStyle>(state.range(1));
    input.appearance = {Qt::green, QColor(255, 255, 255, 24), Qt::white, false};
    input.upColor = Qt::red;
    for (int i = 0; i < 60; ++i) {
        input.history.push_back({1e6 * (i % 7), 3e5 * (i % 5)});
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            makeNetworkImage(input, {Appearance::Dark, ImageShape::Wide, 2.0, 22}));
    }
}
BENCHMARK(image)
    ->ArgNames({"mode", "style"})
    ->ArgsProduct({{0, 1, 2}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
