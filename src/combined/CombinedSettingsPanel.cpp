#include "combined/CombinedSettingsPanel.h"

#include "combined/SegmentList.h"
#include "ui/NoteLine.h"
#include "ui/settings/SliderRow.h"

namespace vostel {

CombinedSettingsPanel::CombinedSettingsPanel(CombinedSettings& combinedSettings,
                                             NotificationCenter& notifications)
    : SettingsPanel(QStringLiteral("Combined")),
      settings(combinedSettings),
      list(new SegmentList(settings)) {
    addNote(
        QStringLiteral("Several monitors side by side in one menu-bar item. Each opens its own "
                       "details; their own items need not be switched on for it."));
    addSection(QStringLiteral("Monitors"));
    addWidget(list);
    emptyNote = addNote(QString());
    addNote(
        QStringLiteral("The top one stands at the left. Drag a row to move it, or use Alt with the "
                       "up and down arrow keys."));
    addSection(QStringLiteral("Layout"));
    addRow(new SliderRow(QStringLiteral("Spacing: "),
                         {CombinedSettings::leastSpacing, CombinedSettings::mostSpacing, 1},
                         {[this] { return settings.spacing(); },
                          [this](double value) { settings.setSpacing(value); }}));
    follow(notifications, {CombinedSettings::changeNotification});
}

void CombinedSettingsPanel::refresh() {
    SettingsPanel::refresh();
    list->refresh();
    emptyNote->setNote(settings.orderedEnabledIDs().isEmpty()
                           ? QStringLiteral("Nothing is enabled: the item shows only its symbol.")
                           : QString(),
                       NoteLine::Kind::Warning);
}

}  // namespace vostel
