#pragma once

#include "monitors/network/NetworkSettings.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

// The page of the network item.
class NetworkSettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // `settings` outlives the panel.
    NetworkSettingsPanel(NetworkSettings& settings, NotificationCenter& notifications);

  private:
    void addInterfaces(NetworkSettings& settings, NotificationCenter& notifications);

    NotificationCenter::Subscription subscription;
};

}  // namespace vostel
