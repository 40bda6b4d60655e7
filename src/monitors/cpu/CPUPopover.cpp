#include "monitors/cpu/CPUPopover.h"

#include <cmath>

#include "monitors/process/TopAppsSection.h"
#include "ui/FooterButtons.h"

namespace vostel {

CPUPopover::CPUPopover(CPUViewModel& viewModel, const CPUSettings& cpuSettings,
                       const CoreLayout& coreLayout, std::function<void()> openSettings)
    : Popover(QStringLiteral("CPU")),
      model(viewModel),
      settings(cpuSettings),
      layout(coreLayout),
      header(new HeaderRow(QStringLiteral("CPU"))),
      graph(new LineGraph),
      coresTitle(new SectionTitle(QString())),
      cores(new BarMeter),
      processes(makeTopAppsList(QStringLiteral("Sampling…"))) {
    add(header);
    graph->setName(QStringLiteral("Overall load, history"));
    add(graph);
    add(coresTitle);
    add(cores);
    if (settings.splitCores() && settings.showPerCoreBars() && layout.isSplit()) {
        efficiencyTitle = new SectionTitle(QString());
        efficiency = new BarMeter;
        efficiency->setName(QStringLiteral("Efficiency cores"));
        add(efficiencyTitle);
        add(efficiency);
    }
    cores->setName(efficiency != nullptr ? QStringLiteral("Performance cores")
                                         : QStringLiteral("Cores"));
    add(new SectionTitle(QStringLiteral("TOP APPS")));
    add(processes);
    setFooter(makeFooter(std::move(openSettings)));

    notifiers.push_back(model.overall.addNotifier([this] {
        header->setValue(QStringLiteral("%1%").arg(std::lround(model.overall.value() * 100)));
    }));
    notifiers.push_back(
        model.history.addNotifier([this] { graph->setHistory(model.history.value()); }));
    notifiers.push_back(model.perCore.addNotifier([this] { showCores(); }));
    notifiers.push_back(model.topApps.addNotifier([this] { showTopApps(); }));
    header->setValue(QStringLiteral("%1%").arg(std::lround(model.overall.value() * 100)));
    graph->setHistory(model.history.value());
    showCores();
    showTopApps();
}

void CPUPopover::showCores() {
    const QColor foreground = settings.effForeground();
    graph->setColor(foreground);
    cores->setColor(foreground);
    if (efficiency == nullptr) {
        coresTitle->setText(QStringLiteral("PER CORE (%1)").arg(model.perCore.value().size()));
        cores->setValues(model.perCore.value());
        return;
    }
    CoreGroups groups = layout.split(model.perCore.value());
    coresTitle->setText(QStringLiteral("PERFORMANCE (%1)").arg(groups.performance.size()));
    efficiencyTitle->setText(QStringLiteral("EFFICIENCY (%1)").arg(groups.efficiency.size()));
    cores->setValues(std::move(groups.performance));
    efficiency->setColor(settings.efficiencyColor());
    efficiency->setValues(std::move(groups.efficiency));
}

void CPUPopover::showTopApps() {
    processes->setEntries(topAppEntries(model.topApps.value(), settings.effForeground(),
                                        [](double percent) {
                                            return QStringLiteral("%1%").arg(std::lround(percent));
                                        }));
}

}  // namespace vostel
