#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTemporaryDir>

#include "app/AppDelegate.h"
#include "app/ModuleTable.h"
#include "statusbar/OffscreenBar.h"

namespace {

using namespace vostel;

// From the wish to the painted window at the page `index`, and closing it again.
void openSettings(benchmark::State& state) {
    const QTemporaryDir folder;
    AppServices services(makeLinuxPlatform(SystemRoots::ofThisMachine()),
                         folder.filePath(QStringLiteral("s.plist")));
    ItemOrder order(services.defaults, itemNames());
    OffscreenBar bar(order);
    AppDelegate delegate(services, bar);
    delegate.moduleManager->loadEnabledModules();
    const QString pages[] = {QStringLiteral("general"), QStringLiteral("cpu")};
    for (auto _ : state) {
        delegate.showSettings(pages[state.range(0)]);
        QCoreApplication::processEvents();
        for (QWidget* window : QApplication::topLevelWidgets()) {
            window->repaint();
        }
        state.PauseTiming();
        for (QWidget* window : QApplication::topLevelWidgets()) {
            window->close();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
}
BENCHMARK(openSettings)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
