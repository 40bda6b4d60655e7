#pragma once

#include "monitors/gpu/GPUSettings.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

// The page of the GPU item.
class GPUSettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // `settings` outlives the panel.
    GPUSettingsPanel(GPUSettings& settings, NotificationCenter& notifications);
};

}  // namespace vostel
