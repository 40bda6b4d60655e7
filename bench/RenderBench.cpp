#include <benchmark/benchmark.h>

#include <array>
#include <cmath>

#include <QGuiApplication>
#include <QPainter>

#include "render/MenuBarImage.h"
#include "render/MeterGraph.h"
#include "render/SymbolImage.h"

namespace {

using vostel::EffAppearance;
using vostel::ImageColors;
using vostel::ImageContext;
using vostel::MenuBarImage;
using vostel::MeterGraph;

const EffAppearance colors{QColor(0, 200, 83), QColor(255, 255, 255, 40), Qt::white, false};

// The CPU item with 16 cores: label and per-core bars. Argument: scale in percent.
void cpuImage(benchmark::State& state) {
    ImageContext context;
    context.scale = static_cast<double>(state.range(0)) / 100;
    std::array<double, 16> loads{};
    double phase = 0;
    for (auto _ : state) {
        phase += 0.1;
        for (std::size_t i = 0; i < loads.size(); ++i) {
            loads[i] = 0.5 + 0.5 * std::sin(phase + static_cast<double>(i));
        }
        benchmark::DoNotOptimize(MenuBarImage::makeLabeled(
            50, QStringLiteral("CPU"), 5, colors, context,
            [&](QPainter& painter, const QRectF& rect, const ImageColors& resolved) {
                MeterGraph::drawBarRow(painter, rect, loads, 1, resolved.foreground,
                                       resolved.track);
            }));
    }
}
BENCHMARK(cpuImage)->Arg(100)->Arg(125)->Arg(200)->Unit(benchmark::kMicrosecond);

// A history of 60 values as a smoothed graph.
void graphImage(benchmark::State& state) {
    ImageContext context;
    context.scale = static_cast<double>(state.range(0)) / 100;
    std::array<double, 60> history{};
    double phase = 0;
    for (auto _ : state) {
        phase += 0.1;
        for (std::size_t i = 0; i < history.size(); ++i) {
            history[i] = 0.5 + 0.5 * std::sin(phase + 0.3 * static_cast<double>(i));
        }
        benchmark::DoNotOptimize(MenuBarImage::makeLabeled(
            36, QStringLiteral("CPU"), 5, colors, context,
            [&](QPainter& painter, const QRectF& rect, const ImageColors& resolved) {
                MeterGraph::drawGraphPanel(painter, rect, history, resolved.foreground,
                                           resolved.track);
            }));
    }
}
BENCHMARK(graphImage)->Arg(100)->Arg(200)->Unit(benchmark::kMicrosecond);

void squareImage(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(MenuBarImage::makeSquare(
            QStringLiteral("CPU"), QStringLiteral("100%"), 0.6, colors, ImageContext{}));
    }
}
BENCHMARK(squareImage)->Unit(benchmark::kMicrosecond);

void symbol(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(vostel::symbolImage(QStringLiteral("cpu"), 16, 1, Qt::white));
    }
}
BENCHMARK(symbol)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
