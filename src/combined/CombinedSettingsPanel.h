#pragma once

#include "combined/CombinedSettings.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

class NoteLine;
class SegmentList;

// The page of the combined item: which items it shows, in which order, and how far apart.
class CombinedSettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // `settings` outlives the panel.
    CombinedSettingsPanel(CombinedSettings& settings, NotificationCenter& notifications);

    void refresh() override;

  private:
    CombinedSettings& settings;
    SegmentList* list;
    NoteLine* emptyNote;
};

}  // namespace vostel
