#pragma once

#include "core/GlobalSettings.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

// The page of the appearance that every item has unless it overrides it.
class AppearanceSettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // `global` outlives the panel.
    AppearanceSettingsPanel(GlobalSettings& global, NotificationCenter& notifications);
};

}  // namespace vostel
