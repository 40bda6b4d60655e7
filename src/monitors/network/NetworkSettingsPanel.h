#pragma once

#include <functional>

#include <QProperty>

#include "monitors/network/NetworkSettings.h"
#include "ui/settings/SettingsPanel.h"

class QVBoxLayout;

namespace vostel {

class NoteLine;
class ToggleRow;

// The page of the network item.
class NetworkSettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // `settings` outlives the panel. `barAppearance`: see AppearanceOverrideSection.
    NetworkSettingsPanel(NetworkSettings& settings, NotificationCenter& notifications,
                         std::function<Appearance()> barAppearance);

    void refresh() override;

  private:
    void addGraphSection();
    void addInterfaceSection();
    // One switch for each interface that is there or chosen, in the custom mode.
    void listInterfaces();
    ToggleRow* makeInterfaceRow(const QString& name);

    NetworkSettings& settings;
    NoteLine* modeNote = nullptr;
    QWidget* list = nullptr;
    QVBoxLayout* listColumn = nullptr;
    QStringList listed;
    std::vector<ToggleRow*> interfaceRows;
    QPropertyNotifier knownChanged;
};

}  // namespace vostel
