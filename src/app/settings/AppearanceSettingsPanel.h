#pragma once

#include <functional>

#include "core/GlobalSettings.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

// The page of the appearance that every item has unless it overrides it.
class AppearanceSettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // `global` outlives the panel. `barAppearance`: of the bar, as it is now.
    AppearanceSettingsPanel(GlobalSettings& global, NotificationCenter& notifications,
                            std::function<Appearance()> barAppearance);
};

}  // namespace vostel
