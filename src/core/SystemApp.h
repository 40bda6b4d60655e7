#pragma once

#include <QString>

namespace vostel::SystemApp {

// Opens the desktop's own system monitor: the current desktop's first, then any that is installed,
// then a terminal with htop, btop or top. False when none is there.
bool openActivityMonitor();

// Opens a URL with the desktop's handler; false when the text is no absolute URL.
bool openURL(const QString& text);

}  // namespace vostel::SystemApp
