#pragma once

#include <functional>
#include <memory>

#include <QObject>

#include "app/AppServices.h"
#include "app/settings/SettingsWindow.h"

namespace vostel {

// The settings window's life: made on first use, given back with its memory when it closes.
class SettingsWindowController : public QObject {
    Q_OBJECT

  public:
    // Borrows both.
    SettingsWindowController(AppServices& services, AppContext& context);
    ~SettingsWindowController() override;

    // Opens the window, or brings it to the front, at a page; an empty id leaves the page as it is.
    void show(const QString& select = {});
    bool isOpen() const { return window != nullptr; }
    QWidget* widget() const { return window.get(); }  // null while it is closed

    // A window of its own that nobody shows, for snapshots.
    std::unique_ptr<SettingsWindow> makeWindow();

    // Called after the window opened and after it closed.
    std::function<void()> onOpenChanged;

  private:
    void windowClosed();

    AppServices& services;
    AppContext& context;
    std::unique_ptr<SettingsWindow> window;
};

}  // namespace vostel
