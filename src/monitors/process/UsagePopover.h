#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "core/ModuleSettings.h"
#include "core/SystemApp.h"
#include "monitors/process/TopApps.h"
#include "monitors/process/UsageViewModel.h"
#include "ui/HeaderRow.h"
#include "ui/LineGraph.h"
#include "ui/NoteLine.h"
#include "ui/Popover.h"
#include "ui/ProcessList.h"
#include "ui/SectionTitle.h"

namespace vostel {

// The frame of a popover about the use of one thing: heading with a percentage, history graph, the
// item's own pieces, the top processes, footer.
class UsagePopover : public Popover {
    Q_OBJECT

  public:
    void settingsChanged() override;

  protected:
    // Begins with heading, why there is no figure, and graph. Follows `model` while it lives.
    UsagePopover(const QString& title, const QString& graphName, UsageViewModel& model,
                 const ModuleSettings& settings);

    // Ends with "TOP APPS" and the footer: call it when the item's own pieces are in.
    // `placeholder` stands for an empty list, `format` makes the text of a process's value;
    // room is kept for `reserved` processes, `tab` is for the system monitor.
    void addTopApps(SystemApp::MonitorTab tab, const QString& placeholder,
                    std::function<QString(double)> format, std::function<void()> openSettings,
                    int reserved = TopApps::limit);

    // Calls `show` now and at each change of `property` or of the settings.
    template <typename T>
    void follow(QProperty<T>& property, std::function<void()> show) {
        notifiers.push_back(property.addNotifier(show));
        show();
        shows.push_back(std::move(show));
    }

    static QString percent(double fraction, bool known = true);  // "37%"; "—"

    const ModuleSettings& settings;
    HeaderRow* header;
    NoteLine* problem;
    LineGraph* graph;
    SectionTitle* processesTitle = nullptr;  // both by addTopApps()
    ProcessList* processes = nullptr;

  private:
    UsageViewModel& frame;
    std::vector<QPropertyNotifier> notifiers;
    std::vector<std::function<void()>> shows;
};

}  // namespace vostel
