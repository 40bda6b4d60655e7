#pragma once

#include <QIcon>

namespace vostel {

// The program's icon for a window: the icon theme's where it is installed, else the program's own.
// Windows ask for it one by one: an icon of the whole application would be loaded for the bar, too,
// and stay in memory.
QIcon appIcon();

}  // namespace vostel
