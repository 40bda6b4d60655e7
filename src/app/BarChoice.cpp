#include "app/BarChoice.h"

#include <xcb/xcb.h>

#include <memory>

#include "core/Log.h"

namespace vostel {

Display findDisplay() {
    if (qEnvironmentVariableIsSet("DISPLAY")) {
        const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
            xcb_connect(nullptr, nullptr), &xcb_disconnect);
        if (xcb_connection_has_error(connection.get()) == 0) {
            return Display::X11;
        }
        logLine(QStringLiteral("no X server answers at %1").arg(qEnvironmentVariable("DISPLAY")));
    }
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ? Display::Wayland : Display::None;
}

BarKind chooseBar(BarKind wanted, const BarSurroundings& surroundings, QString* complaint) {
    const bool hasDisplay = surroundings.display != Display::None;
    const bool canDock = surroundings.display == Display::X11;
    if (wanted == BarKind::Offscreen || (wanted == BarKind::Dock && canDock) ||
        (wanted == BarKind::Tray && hasDisplay)) {
        return wanted;  // a tray without a host waits for one
    }
    if (complaint != nullptr && wanted != BarKind::Automatic) {
        *complaint = wanted == BarKind::Dock
                         ? QStringLiteral("the dock bar needs an X server or XWayland")
                         : QStringLiteral("the tray needs a display");
    }
    if (hasDisplay && surroundings.hasTrayHost && surroundings.hostKeepsWideImages) {
        return BarKind::Tray;
    }
    if (canDock) {
        return BarKind::Dock;
    }
    // Wayland without an X server: a tray that is not there yet may still come (at the start of a
    // session this program is often the first).
    return hasDisplay ? BarKind::Tray : BarKind::Offscreen;
}

}  // namespace vostel
