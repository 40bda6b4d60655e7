#include "monitors/memory/MemoryPopover.h"

#include <cmath>

#include "monitors/process/TopAppsSection.h"
#include "render/RateFormatter.h"
#include "ui/SectionTitle.h"

namespace vostel {

namespace {

QString bytes(double count) {
    return QString::fromStdString(RateFormatter::bytes(count));
}

}  // namespace

MemoryPopover::MemoryPopover(MemoryViewModel& viewModel, const ModuleSettings& memorySettings,
                             std::function<void()> openSettings)
    : Popover(QStringLiteral("Memory")),
      model(viewModel),
      settings(memorySettings),
      header(new HeaderRow(QStringLiteral("Memory"))),
      graph(new LineGraph),
      processes(makeTopAppsList(QStringLiteral("Sampling…"))) {
    add(header);
    graph->setName(QStringLiteral("Used memory, history"));
    add(graph);
    add(new SectionTitle(QStringLiteral("TOP APPS")));
    add(processes);
    setFooter(makeFooter(std::move(openSettings)));
    notifiers.push_back(model.usage.addNotifier([this] { showUsage(); }));
    notifiers.push_back(
        model.history.addNotifier([this] { graph->setHistory(model.history.value()); }));
    notifiers.push_back(model.topApps.addNotifier([this] { showTopApps(); }));
    graph->setHistory(model.history.value());
    showUsage();
    showTopApps();
}

void MemoryPopover::showUsage() {
    const MemoryUsage usage = model.usage.value();
    graph->setColor(settings.effForeground());
    header->setValue(QStringLiteral("%1%").arg(std::lround(usage.fraction() * 100)));
    header->setDetail(
        QStringLiteral("Used %1 of %2").arg(bytes(usage.usedBytes), bytes(usage.totalBytes)));
}

void MemoryPopover::showTopApps() {
    processes->setEntries(topAppEntries(model.topApps.value(), settings.effForeground(), bytes));
}

}  // namespace vostel
