#pragma once

#include <memory>
#include <optional>

#include <QString>

#include "app/CommandLine.h"
#include "statusbar/StatusBar.h"

namespace vostel {

// Which windowing system the program's windows go to; decided before the application object is
// made.
enum class Display { X11, Wayland, None };

// X11 (or XWayland) when a server answers at $DISPLAY, else Wayland when $WAYLAND_DISPLAY is set,
// else none. A server that is named but does not answer is reported on the log.
Display findDisplay();

// What the machine offers, as far as the choice of the bar depends on it.
struct BarSurroundings {
    Display display = Display::None;
    bool hasTrayHost = false;
    bool hostKeepsWideImages = false;
};

// The bar to open for what the user asked for:
// automatic: a display with a tray host that keeps wide images -> tray; else X11 -> dock; else any
// display -> tray, which waits for a host; else off-screen. What cannot be had gives the best that
// is left, and `complaint` says so.
BarKind chooseBar(BarKind wanted, const BarSurroundings& surroundings, QString* complaint);

}  // namespace vostel
