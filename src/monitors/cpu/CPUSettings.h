#pragma once

#include "core/ModuleSettings.h"

namespace vostel {

// "cpu." keys; posts "cpuSettingsChanged".
class CPUSettings : public ModuleSettings {
  public:
    CPUSettings(DefaultsStore& store, NotificationCenter& center, GlobalSettings& global);

    void revertAppearanceToGlobal() override;

    Setting<bool> showSingleBar;
    Setting<bool> showPerCoreBars;
    Setting<bool> showGraph;
    Setting<bool> splitCores;
    OptionalSetting<QString> efficiencyHex;  // "cpu.ecore": colour of efficiency-core bars

    // The colour of efficiency-core bars: efficiencyHex, else the effective foreground.
    QColor efficiencyColor() const;
};

}  // namespace vostel
