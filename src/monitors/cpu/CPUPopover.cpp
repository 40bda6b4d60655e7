#include "monitors/cpu/CPUPopover.h"

#include <cmath>

namespace vostel {

CPUPopover::CPUPopover(CPUViewModel& viewModel, const CPUSettings& ownSettings,
                       std::function<CoreLayout()> coreLayout, std::function<void()> openSettings)
    : UsagePopover(QStringLiteral("CPU"), QStringLiteral("Overall load, history"), viewModel,
                   ownSettings),
      model(viewModel),
      cpuSettings(ownSettings),
      layout(std::move(coreLayout)),
      coresTitle(new SectionTitle(QString())),
      cores(new BarMeter),
      efficiencyTitle(new SectionTitle(QString())),
      efficiency(new BarMeter) {
    efficiency->setName(QStringLiteral("Efficiency cores"));
    for (Piece* piece :
         std::initializer_list<Piece*>{coresTitle, cores, efficiencyTitle, efficiency}) {
        add(piece);
    }
    const auto showLoad = [this] {
        header->setValue(percent(model.overall.value(), model.measured.value()));
    };
    follow(model.overall, showLoad);
    follow(model.measured, showLoad);
    follow(model.perCore, [this] { showCores(); });
    addTopApps(
        SystemApp::MonitorTab::CPU, QStringLiteral("Sampling…"),
        [](double load) { return QStringLiteral("%1%").arg(std::lround(load)); },
        std::move(openSettings));
}

void CPUPopover::showCores() {
    const CoreLayout kinds = layout();
    const bool isSplit =
        cpuSettings.splitCores() && cpuSettings.showPerCoreBars() && kinds.isSplit();
    CoreGroups groups =
        isSplit ? kinds.split(model.perCore.value()) : CoreGroups{model.perCore.value(), {}};
    coresTitle->setText(
        (isSplit ? QStringLiteral("PERFORMANCE (%1)") : QStringLiteral("PER CORE (%1)"))
            .arg(groups.performance.size()));
    efficiencyTitle->setText(QStringLiteral("EFFICIENCY (%1)").arg(groups.efficiency.size()));
    cores->setName(isSplit ? QStringLiteral("Performance cores") : QStringLiteral("Cores"));
    cores->setColor(cpuSettings.effForeground());
    cores->setValues(std::move(groups.performance));
    efficiency->setColor(cpuSettings.efficiencyColor());
    efficiency->setValues(std::move(groups.efficiency));
    efficiencyTitle->setVisible(isSplit);
    efficiency->setVisible(isSplit);
}

}  // namespace vostel
