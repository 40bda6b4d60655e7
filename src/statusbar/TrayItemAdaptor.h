#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>

#include "statusbar/TrayPixmap.h"

namespace vostel {

class TrayItem;

// The item as hosts see it: org.kde.StatusNotifierItem, protocol version 0. There is no "Menu" on
// purpose: hosts that find one open it themselves and do not report the right button any more.
class TrayItemAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(vostel::TrayPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(vostel::TrayToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)

  public:
    // Speaks for `item`; `parent` is the object on the bus.
    TrayItemAdaptor(QObject* parent, TrayItem* item);

    QString category() const;
    QString id() const;
    QString title() const;
    QString status() const;
    int windowId() const { return 0; }
    QString iconName() const { return {}; }
    vostel::TrayPixmaps iconPixmap() const;
    vostel::TrayToolTip toolTip() const;
    bool itemIsMenu() const { return false; }

  public Q_SLOTS:
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    void Scroll(int delta, const QString& orientation);

  Q_SIGNALS:
    void NewIcon();
    void NewTitle();
    void NewToolTip();
    void NewStatus(const QString& status);

  private:
    TrayItem* item;
};

// The same for a host that reports the right button only through a menu.
class TrayMenuItemAdaptor final : public TrayItemAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QDBusObjectPath Menu READ menu)

  public:
    using TrayItemAdaptor::TrayItemAdaptor;
    QDBusObjectPath menu() const;
};

}  // namespace vostel
