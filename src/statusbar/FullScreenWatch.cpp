#include "statusbar/FullScreenWatch.h"

#include <xcb/xcb.h>

#include <chrono>

#include <QCoreApplication>

#include "statusbar/X11Desktop.h"

namespace vostel {

namespace {

// Window managers change several properties at once, and a window that goes full screen gets its
// state after it is raised.
constexpr std::chrono::milliseconds settleTime{150};

}  // namespace

FullScreenWatch::FullScreenWatch(X11Desktop& x11) : desktop(x11) {
    desktop.watchRoot();
    lookSoon.setSingleShot(true);
    lookSoon.setInterval(settleTime);
    connect(&lookSoon, &QTimer::timeout, this, &FullScreenWatch::look);
    lookSoon.start();
    QCoreApplication::instance()->installNativeEventFilter(this);
}

FullScreenWatch::~FullScreenWatch() = default;  // the base class takes the filter out

bool FullScreenWatch::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY) {  // the top bit: sent by a client
        const auto* property = reinterpret_cast<const xcb_property_notify_event_t*>(event);
        if (property->window == desktop.rootWindow() &&
            desktop.concernsActiveWindow(property->atom)) {
            lookSoon.start();
        }
    }
    return false;
}

void FullScreenWatch::look() {
    const QRect now = desktop.activeFullScreenWindow();
    if (now == last) return;
    last = now;
    Q_EMIT changed(now);
}

}  // namespace vostel
