#include "monitors/process/TopAppsSection.h"

namespace vostel {

ProcessList* makeTopAppsList(const QString& placeholder, int reserved) {
    return new ProcessList(placeholder, reserved);
}

std::vector<ProcessEntry> topAppEntries(const QList<ProcStat>& list, const QColor& color,
                                        const std::function<QString(double)>& format) {
    std::vector<ProcessEntry> entries;
    for (const ProcStat& process : list) {
        entries.push_back({process.name, process.icon, {{format(process.value), color}}, {}});
    }
    return entries;
}

FooterButtons* makeFooter(SystemApp::MonitorTab tab, std::function<void()> openSettings) {
    auto* footer = new FooterButtons;
    // The popover goes first: it would cover the window that is about to open.
    QObject::connect(footer, &FooterButtons::monitorRequested, footer, [footer, tab] {
        footer->window()->close();
        SystemApp::openActivityMonitor(tab);
    });
    QObject::connect(footer, &FooterButtons::settingsRequested, footer,
                     [footer, open = std::move(openSettings)] {
                         footer->window()->close();
                         open();
                     });
    return footer;
}

}  // namespace vostel
