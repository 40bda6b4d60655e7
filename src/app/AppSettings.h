#pragma once

#include "core/Setting.h"
#include "statusbar/DockBarOptions.h"

namespace vostel {

// "app." keys of the program itself; posts "appSettingsChanged".
class AppSettings {
  public:
    static constexpr const char* changeNotification = "appSettingsChanged";
    static constexpr double thinnest = 16;  // points, of the bar
    static constexpr double thickest = 48;

    AppSettings(DefaultsStore& store, NotificationCenter& center);

    // The own bar as the settings want it; a text that is no choice counts as the default.
    DockBarOptions dockBarOptions() const;

  private:
    SettingsGroup group;

  public:
    Setting<QString> bar;              // "auto", "dock", "tray", "offscreen"
    Setting<QString> barEdge;          // "top", "bottom"
    Setting<double> barThickness;      // points
    Setting<QString> barAppearance;    // "dark", "light", "auto"
    Setting<bool> showDock;            // a taskbar entry while the settings window is closed
    Setting<bool> slowOnBattery;       // doubles every interval on battery
    Setting<bool> checkForUpdates;     // by itself, where this build has an update feed
    Setting<double> lastUpdateCheck;   // that succeeded, seconds since 1970; 0: never
    Setting<QString> announcedUpdate;  // the version that the user was last told of
    Setting<double> windowWidth;       // of the settings window, logical pixels; 0: not known
    Setting<double> windowHeight;
};

}  // namespace vostel
