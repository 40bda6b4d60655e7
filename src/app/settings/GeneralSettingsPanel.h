#pragma once

#include "app/AppServices.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

// The page of the program itself: where its items are shown, how it starts, what it is.
class GeneralSettingsPanel : public SettingsPanel {
    Q_OBJECT

  public:
    // Borrows both.
    GeneralSettingsPanel(AppServices& services, AppContext& context);

  private:
    void addProblemNote(DefaultsStore& store);
    void addBarSection(AppSettings& settings, AppContext& context);
    void addStartupSection(AppSettings& settings);
    void addUpdatesSection(UpdateController& updates);
    void addSettingsFileSection(AppContext& context);
    void addAboutSection(AppContext& context);
};

}  // namespace vostel
