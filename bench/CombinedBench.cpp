// One image of the combined item with four segments, of which one or all have something new. What
// the segments' own images cost is measured with their items.
#include <benchmark/benchmark.h>

#include <QApplication>

#include "combined/tests/FakeSegments.h"

namespace {

using namespace vostel;

// Arguments: the scale, and how many segments have something new.
void renderOnce(benchmark::State& state) {
    FakeWorld world;
    const std::pair<const char*, int> widths[] = {{"a", 12}, {"b", 12}, {"c", 84}, {"d", 114}};
    for (const auto& [id, width] : widths) {
        world.state[QLatin1String(id)].width = width;
    }
    OffscreenBarOptions options;
    options.scale = static_cast<double>(state.range(0));
    world.bar.setOptions(options);
    AppContext context{world.platform,
                       world.background,
                       world.scheduler,
                       world.defaults,
                       world.notifications,
                       world.global,
                       world.bar,
                       nullptr,
                       {},
                       {}};
    CombinedModule module(context, world.settings, world.catalog());
    module.start();
    for (auto _ : state) {
        for (int i = 0; i < state.range(1); ++i) {
            world.state[QLatin1String(widths[i].first)].live->onImageChanged();
        }
        QCoreApplication::sendPostedEvents(&module);
    }
}
BENCHMARK(renderOnce)
    ->Args({1, 1})
    ->Args({1, 4})
    ->Args({2, 1})
    ->Args({2, 4})
    ->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
