#include "monitors/cpu/CPUSettings.h"

#include "core/ColorText.h"

namespace vostel {

CPUSettings::CPUSettings(DefaultsStore& store, NotificationCenter& center,
                         GlobalSettings& globalSettings)
    : ModuleSettings(store, center, globalSettings, QStringLiteral("cpu."), "cpuSettingsChanged"),
      showSingleBar(group, QStringLiteral("showSingleBar"), true),
      showPerCoreBars(group, QStringLiteral("showPerCoreBars"), false),
      showGraph(group, QStringLiteral("showGraph"), false),
      splitCores(group, QStringLiteral("splitCores"), false),
      efficiencyHex(group, QStringLiteral("ecore")) {}

void CPUSettings::revertAppearanceToGlobal() {
    ModuleSettings::revertAppearanceToGlobal();
    efficiencyHex = std::nullopt;
}

QColor CPUSettings::efficiencyColor() const {
    const auto color = efficiencyHex() ? colorFromHex(*efficiencyHex()) : std::nullopt;
    return color.value_or(effForeground());
}

}  // namespace vostel
