#pragma once

#include <optional>

#include <QString>

namespace vostel::SystemApp {

// What a system monitor should come up with.
enum class MonitorTab { CPU, Memory, Energy, Disk, Network };

// The name of the system monitor that openActivityMonitor() would open, as its users know it
// ("System Monitor", "Task Manager", "htop"). Empty when none is installed. Looks through PATH.
QString activityMonitorName();

// Opens the desktop's own system monitor: the current desktop's first, then any that is installed,
// then a terminal with btop, htop or top. False when none is there. With a tab it shows the page
// that fits best, where it can be told so.
bool openActivityMonitor(std::optional<MonitorTab> tab = std::nullopt);

// Opens a URL with the desktop's handler; false when the text is no absolute URL.
bool openURL(const QString& text);

// Shows a file in the desktop's file manager, selected; where none takes that wish, opens the
// file's folder. Returns at once.
void reveal(const QString& path);

}  // namespace vostel::SystemApp
