#include "app/AppSettings.h"

#include <algorithm>

namespace vostel {

AppSettings::AppSettings(DefaultsStore& store, NotificationCenter& center)
    : group(store, center, QStringLiteral("app."), changeNotification),
      bar(group, QStringLiteral("bar"), QStringLiteral("auto")),
      barEdge(group, QStringLiteral("barEdge"), QStringLiteral("top")),
      barThickness(group, QStringLiteral("barThickness"), DockBarOptions().thickness),
      barAppearance(group, QStringLiteral("barAppearance"), QStringLiteral("dark")),
      showDock(group, QStringLiteral("showDock"), false),
      slowOnBattery(group, QStringLiteral("slowOnBattery"), false),
      checkForUpdates(group, QStringLiteral("checkForUpdates"), true),
      lastUpdateCheck(group, QStringLiteral("lastUpdateCheck"), 0),
      announcedUpdate(group, QStringLiteral("announcedUpdate"), QString()),
      windowWidth(group, QStringLiteral("settingsWidth"), 0),
      windowHeight(group, QStringLiteral("settingsHeight"), 0) {}

DockBarOptions AppSettings::dockBarOptions() const {
    DockBarOptions options;
    options.edge = barEdge() == QStringLiteral("bottom") ? BarEdge::Bottom : BarEdge::Top;
    options.thickness = std::clamp(barThickness(), thinnest, thickest);
    options.appearance = barAppearance() == QStringLiteral("light")  ? AppearanceChoice::Light
                         : barAppearance() == QStringLiteral("auto") ? AppearanceChoice::Automatic
                                                                     : AppearanceChoice::Dark;
    return options;
}

}  // namespace vostel
