#pragma once

#include <functional>
#include <vector>

#include <QColor>
#include <QString>

#include "core/SystemApp.h"
#include "monitors/process/ProcStat.h"
#include "monitors/process/TopApps.h"
#include "ui/FooterButtons.h"
#include "ui/ProcessList.h"

namespace vostel {

// The list under "TOP APPS", with room for the eight rows that items ask for, or for `reserved`.
ProcessList* makeTopAppsList(const QString& placeholder, int reserved = TopApps::limit);

// The rows of such a list: `format` turns a process's value into its text, drawn in `color`.
std::vector<ProcessEntry> topAppEntries(const QList<ProcStat>& list, const QColor& color,
                                        const std::function<QString(double)>& format);

// The footer that every popover has; `tab` is what the system monitor comes up with.
FooterButtons* makeFooter(SystemApp::MonitorTab tab, std::function<void()> openSettings);

}  // namespace vostel
