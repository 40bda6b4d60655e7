#include "monitors/gpu/GPUSettingsPanel.h"

#include "ui/settings/AppearanceOverrideSection.h"
#include "ui/settings/TextRow.h"

namespace vostel {

GPUSettingsPanel::GPUSettingsPanel(GPUSettings& settings, NotificationCenter& notifications,
                                   std::function<Appearance()> barAppearance)
    : SettingsPanel(QStringLiteral("GPU")) {
    addSection(QStringLiteral("Menu Bar"));
    addRow(new TextRow(QStringLiteral("Label (Optional)"), bound(settings.label)));
    AppearanceOverrideSection{settings, std::move(barAppearance)}.addTo(*this);
    follow(notifications, {settings.changeNotification(), "globalSettingsChanged"});
}

}  // namespace vostel
