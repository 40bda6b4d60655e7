#include <benchmark/benchmark.h>

#include <cmath>

#include <QApplication>

#include "ui/BarMeter.h"
#include "ui/FooterButtons.h"
#include "ui/HeaderRow.h"
#include "ui/Popover.h"
#include "ui/ProcessList.h"
#include "ui/SectionTitle.h"

namespace {

using namespace vostel;

struct Pieces {
    Popover popover{QStringLiteral("CPU")};
    HeaderRow* header = new HeaderRow(QStringLiteral("CPU"));
    BarMeter* cores = new BarMeter;
    ProcessList* list = new ProcessList(QStringLiteral("Sampling…"), 8);

    Pieces() {
        popover.add(header);
        popover.add(new SectionTitle(QStringLiteral("PER CORE (16)")));
        popover.add(cores);
        popover.add(new SectionTitle(QStringLiteral("TOP APPS")));
        popover.add(list);
        popover.setFooter(new FooterButtons);
    }

    // One tick's values; the list changes in `changedRows` lines.
    void fill(int tick, int changedRows) {
        header->setValue(QString::number(tick % 100) + u'%');
        std::vector<double> loads;
        for (int i = 0; i < 16; ++i) {
            loads.push_back(0.5 + 0.5 * std::sin(tick * 0.1 + i));
        }
        cores->setValues(loads);
        std::vector<ProcessEntry> entries(8);
        for (int i = 0; i < 8; ++i) {
            entries[static_cast<std::size_t>(i)].name = QStringLiteral("process %1").arg(i);
            entries[static_cast<std::size_t>(i)].values = {
                {QString::number(i < changedRows ? tick % 100 : 50), QColor(0, 200, 83)}};
        }
        list->setEntries(entries);
    }
};

// From nothing to the first picture on the screen.
void openPopover(benchmark::State& state) {
    for (auto _ : state) {
        Pieces pieces;
        pieces.fill(1, 8);
        pieces.popover.showAt(QRect(600, 0, 40, 24));
        QApplication::processEvents();
    }
}
BENCHMARK(openPopover)->Unit(benchmark::kMillisecond);

// A tick while it is open, redraw included. Argument: lines of the list that change.
void tickPopover(benchmark::State& state) {
    Pieces pieces;
    pieces.popover.showAt(QRect(600, 0, 40, 24));
    QApplication::processEvents();
    int tick = 0;
    for (auto _ : state) {
        pieces.fill(++tick, static_cast<int>(state.range(0)));
        QApplication::processEvents();
    }
}
BENCHMARK(tickPopover)->Arg(0)->Arg(8)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
