#include "monitors/memory/MemorySettingsPanel.h"

#include "ui/settings/AppearanceOverrideSection.h"
#include "ui/settings/TextRow.h"

namespace vostel {

MemorySettingsPanel::MemorySettingsPanel(MemorySettings& settings,
                                         NotificationCenter& notifications,
                                         std::function<Appearance()> barAppearance)
    : SettingsPanel(QStringLiteral("Memory")) {
    addSection(QStringLiteral("Menu Bar"));
    addRow(new TextRow(QStringLiteral("Label (Optional)"), bound(settings.label)));
    AppearanceOverrideSection{settings, std::move(barAppearance)}.addTo(*this);
    follow(notifications, {settings.changeNotification(), "globalSettingsChanged"});
}

}  // namespace vostel
