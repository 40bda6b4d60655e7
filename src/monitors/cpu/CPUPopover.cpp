#include "monitors/cpu/CPUPopover.h"

#include <cmath>

namespace vostel {

CPUPopover::CPUPopover(CPUViewModel& viewModel, const CPUSettings& ownSettings,
                       const CoreLayout& coreLayout, std::function<void()> openSettings)
    : UsagePopover(QStringLiteral("CPU"), QStringLiteral("Overall load, history"), viewModel,
                   ownSettings),
      model(viewModel),
      cpuSettings(ownSettings),
      layout(coreLayout),
      coresTitle(new SectionTitle(QString())),
      cores(new BarMeter) {
    add(coresTitle);
    add(cores);
    if (cpuSettings.splitCores() && cpuSettings.showPerCoreBars() && layout.isSplit()) {
        efficiencyTitle = new SectionTitle(QString());
        efficiency = new BarMeter;
        efficiency->setName(QStringLiteral("Efficiency cores"));
        add(efficiencyTitle);
        add(efficiency);
    }
    cores->setName(efficiency != nullptr ? QStringLiteral("Performance cores")
                                         : QStringLiteral("Cores"));
    follow(model.overall, [this] { header->setValue(percent(model.overall.value())); });
    follow(model.perCore, [this] { showCores(); });
    addTopApps(
        SystemApp::MonitorTab::CPU, QStringLiteral("Sampling…"),
        [](double load) { return QStringLiteral("%1%").arg(std::lround(load)); },
        std::move(openSettings));
}

void CPUPopover::showCores() {
    cores->setColor(cpuSettings.effForeground());
    if (efficiency == nullptr) {
        coresTitle->setText(QStringLiteral("PER CORE (%1)").arg(model.perCore.value().size()));
        cores->setValues(model.perCore.value());
        return;
    }
    CoreGroups groups = layout.split(model.perCore.value());
    coresTitle->setText(QStringLiteral("PERFORMANCE (%1)").arg(groups.performance.size()));
    efficiencyTitle->setText(QStringLiteral("EFFICIENCY (%1)").arg(groups.efficiency.size()));
    cores->setValues(std::move(groups.performance));
    efficiency->setColor(cpuSettings.efficiencyColor());
    efficiency->setValues(std::move(groups.efficiency));
}

}  // namespace vostel
