#include "statusbar/TrayItemAdaptor.h"

#include "statusbar/TrayItem.h"
#include "statusbar/TrayMenuAdaptor.h"

namespace vostel {

TrayItemAdaptor::TrayItemAdaptor(QObject* parent, TrayItem* owner)
    : QDBusAbstractAdaptor(parent), item(owner) {}

QString TrayItemAdaptor::category() const {
    return QStringLiteral("Hardware");
}
QString TrayItemAdaptor::id() const {
    return item->autosaveName();
}
QString TrayItemAdaptor::title() const {
    return item->shownTitle();
}
// A hidden item leaves the bus altogether: hosts differ in what they do with a passive one.
QString TrayItemAdaptor::status() const {
    return QStringLiteral("Active");
}
TrayPixmaps TrayItemAdaptor::iconPixmap() const {
    return item->shownPixmaps();
}
TrayToolTip TrayItemAdaptor::toolTip() const {
    return item->shownToolTip();
}

void TrayItemAdaptor::Activate(int x, int y) {
    item->takeClick(Qt::LeftButton, {x, y});
}
void TrayItemAdaptor::SecondaryActivate(int x, int y) {
    item->takeClick(Qt::MiddleButton, {x, y});
}
void TrayItemAdaptor::ContextMenu(int x, int y) {
    item->takeClick(Qt::RightButton, {x, y});
}
void TrayItemAdaptor::Scroll(int /*delta*/, const QString& /*orientation*/) {}

QDBusObjectPath TrayMenuItemAdaptor::menu() const {
    return QDBusObjectPath(trayMenuPath);
}

}  // namespace vostel
