#include "statusbar/DockWindow.h"

#include <QAccessible>
#include <QPlatformSurfaceEvent>

namespace vostel {

DockWindow::DockWindow(ItemBar& bar) : shown(bar) {
    setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
    setTitle(QStringLiteral("Vostel"));
}

QAccessibleInterface* DockWindow::accessibleRoot() const {
    return QAccessible::queryAccessibleInterface(const_cast<DockWindow*>(this));
}

void DockWindow::exposeEvent(QExposeEvent*) {
    if (isExposed()) Q_EMIT exposed();
}

bool DockWindow::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::PlatformSurface:
            if (static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() ==
                QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed) {
                Q_EMIT surfaceLost();
            }
            break;
        case QEvent::ThemeChange:
        case QEvent::ApplicationPaletteChange:
            Q_EMIT themeChanged();
            break;
        case QEvent::Close:  // a window manager's "close all" must not take the bar away
            event->ignore();
            return true;
        default:
            break;
    }
    return QWindow::event(event);
}

}  // namespace vostel
