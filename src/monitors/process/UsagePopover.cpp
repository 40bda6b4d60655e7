#include "monitors/process/UsagePopover.h"

#include <cmath>

#include "core/SourceText.h"
#include "monitors/process/TopAppsSection.h"

namespace vostel {

UsagePopover::UsagePopover(const QString& title, const QString& graphName, UsageViewModel& model,
                           const ModuleSettings& moduleSettings)
    : Popover(title),
      settings(moduleSettings),
      header(new HeaderRow(title)),
      problem(new NoteLine),
      graph(new LineGraph),
      frame(model) {
    add(header);
    add(problem);
    graph->setName(graphName);
    add(graph);
    follow(frame.problem,
           [this] { problem->setNote(frame.problem.value(), NoteLine::Kind::Warning); });
    follow(frame.history, [this] {
        graph->setColor(settings.effForeground());
        graph->setHistory(frame.history.value());
    });
}

void UsagePopover::settingsChanged() {
    for (const auto& show : shows) {
        show();
    }
}

void UsagePopover::addTopApps(SystemApp::MonitorTab tab, const QString& placeholder,
                              std::function<QString(double)> format,
                              std::function<void()> openSettings, int reserved) {
    processesTitle = new SectionTitle(QStringLiteral("TOP APPS"));
    processes = makeTopAppsList(placeholder, reserved);
    add(processesTitle);
    add(processes);
    setFooter(makeFooter(tab, std::move(openSettings)));
    follow(frame.topApps, [this, format = std::move(format)] {
        processes->setEntries(
            topAppEntries(frame.topApps.value(), settings.effForeground(), format));
    });
}

QString UsagePopover::percent(double fraction, bool known) {
    return known ? QStringLiteral("%1%").arg(std::lround(fraction * 100)) : noValue;
}

}  // namespace vostel
