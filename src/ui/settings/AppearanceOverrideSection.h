#pragma once

#include <vector>

#include "core/IntervalOptions.h"
#include "core/OverridableAppearance.h"
#include "ui/settings/OverrideColorRow.h"

namespace vostel {

class SettingsPanel;

// The rows by which an item overrides the global appearance, and the way back to it.
struct AppearanceOverrideSection {
    OverridableAppearance& settings;
    std::function<Appearance()> barAppearance;  // of the bar that the item is in, as it is now
    bool includeForeground = true;
    bool includeInterval = true;
    std::vector<double> intervalOptions = {IntervalOptions::monitors.begin(),
                                           IntervalOptions::monitors.end()};
    std::vector<OverrideColor> extraColorRows = {};
    bool showRevert = true;

    // Adds the rows to the panel as a section of their own. `settings` outlives the panel, which
    // follows the notifications of the item and of the global settings.
    void addTo(SettingsPanel& panel) const;
};

}  // namespace vostel
