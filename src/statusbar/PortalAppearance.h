#pragma once

#include <optional>

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

#include "statusbar/StatusImage.h"

namespace vostel {

// Follows the desktop's colour scheme by the settings portal
// (org.freedesktop.portal.Settings, "org.freedesktop.appearance" "color-scheme"). It never starts
// the portal, never waits for it, and picks it up when it appears.
class PortalAppearance : public QObject {
    Q_OBJECT

  public:
    explicit PortalAppearance(QDBusConnection bus);

    // Dark as long as the desktop states no preference: most panels are dark.
    Appearance appearance() const { return current; }

  Q_SIGNALS:
    void changed();

  private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void read();
    void take(const QVariant& value);

    QDBusConnection bus;
    Appearance current = Appearance::Dark;
};

}  // namespace vostel
