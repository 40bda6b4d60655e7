#pragma once

#include <functional>

#include "monitors/gpu/GPUSettings.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

// The page of the GPU item.
class GPUSettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // `settings` outlives the panel. `barAppearance`: see AppearanceOverrideSection.
    GPUSettingsPanel(GPUSettings& settings, NotificationCenter& notifications,
                     std::function<Appearance()> barAppearance);
};

}  // namespace vostel
