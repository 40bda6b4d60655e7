#pragma once

#include <functional>
#include <memory>

#include <QObject>

#include "app/AppSettings.h"

class QWidget;

namespace vostel {

class SettingsWindowController;

// The program's entry in the taskbar. While the settings window is open, that window is the entry;
// with "app.showDock" a minimised window without content keeps it while the settings are closed.
class DockIcon : public QObject {
    Q_OBJECT

  public:
    // `activated` is called when the user chooses the entry. Borrows the others.
    DockIcon(AppSettings& settings, SettingsWindowController& window,
             std::function<void()> activated);
    ~DockIcon() override;

    // Shows or removes the entry as the settings and the window are now.
    void apply();

  private:
    class Entry;

    AppSettings& settings;
    SettingsWindowController& window;
    std::function<void()> activated;
    std::unique_ptr<Entry> entry;
};

}  // namespace vostel
