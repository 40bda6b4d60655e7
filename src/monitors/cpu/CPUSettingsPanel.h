#pragma once

#include <functional>

#include "monitors/cpu/CPUSettings.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

// The page of the CPU item.
class CPUSettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // `settings` outlives the panel. `barAppearance`: see AppearanceOverrideSection. `canSplit`:
    // the machine has processors of two kinds.
    CPUSettingsPanel(CPUSettings& settings, NotificationCenter& notifications,
                     std::function<Appearance()> barAppearance, bool canSplit);
};

}  // namespace vostel
