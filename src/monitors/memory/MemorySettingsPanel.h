#pragma once

#include <functional>

#include "monitors/memory/MemoryModule.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

// The page of the memory item.
class MemorySettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // `settings` outlives the panel. `barAppearance`: see AppearanceOverrideSection.
    MemorySettingsPanel(MemorySettings& settings, NotificationCenter& notifications,
                        std::function<Appearance()> barAppearance);
};

}  // namespace vostel
