#include "monitors/cpu/CPUSettingsPanel.h"

#include "core/ColorText.h"
#include "ui/settings/AppearanceOverrideSection.h"
#include "ui/settings/TextRow.h"
#include "ui/settings/ToggleRow.h"

namespace vostel {

CPUSettingsPanel::CPUSettingsPanel(CPUSettings& settings, NotificationCenter& notifications,
                                   std::function<Appearance()> barAppearance, bool canSplit)
    : SettingsPanel(QStringLiteral("CPU")) {
    addSection(QStringLiteral("Menu Bar"));
    addRow(new ToggleRow(QStringLiteral("Single Bar"), bound(settings.showSingleBar)));
    addRow(new ToggleRow(QStringLiteral("Per-Core Bars"), bound(settings.showPerCoreBars)));
    auto* split = new ToggleRow(QStringLiteral("Split Performance / Efficiency Cores"),
                                bound(settings.splitCores));
    if (!canSplit) {
        split->setHint(QStringLiteral("The cores of this machine are all of one kind."));
    }
    addRow(split);
    addRow(new ToggleRow(QStringLiteral("CPU Graph"), bound(settings.showGraph)));
    addRow(new TextRow(QStringLiteral("Label (Optional)"), bound(settings.label)));

    AppearanceOverrideSection appearance{settings, std::move(barAppearance)};
    const auto foreground = [&settings] { return settings.effForeground(); };
    appearance.extraColorRows.push_back(
        {QStringLiteral("Efficiency Core Color"), bound(settings.efficiencyHex), foreground,
         foreground, [foreground] { return globalText(hexString(foreground())); }});
    appearance.addTo(*this);
    follow(notifications, {settings.changeNotification(), "globalSettingsChanged"});
}

}  // namespace vostel
