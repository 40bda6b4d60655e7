#pragma once

#include <memory>
#include <optional>

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariant>

#include "statusbar/BusLink.h"
#include "statusbar/StatusImage.h"

namespace vostel {

// Whether the desktop is meant to be dark or light, by the settings portal
// (org.freedesktop.portal.Settings, "org.freedesktop.appearance" "color-scheme"). It never starts
// the portal, never waits for it, picks it up when it appears, and never polls.
class DesktopAppearance final : public QObject {
    Q_OBJECT

  public:
    // Borrows the link, and follows it when the bus was restarted.
    explicit DesktopAppearance(const BusLink& bus);

    // Empty while the desktop states no preference.
    std::optional<Appearance> stated() const { return portal; }
    // What the desktop states, else what the toolkit's palette looks like.
    Appearance orPalette() const;

    // The portal's number (1 dark, 2 light), however many variants it is wrapped in. Empty: no
    // preference, or nothing that makes sense.
    static std::optional<Appearance> fromPortal(QVariant value);

  Q_SIGNALS:
    void changed();

  private Q_SLOTS:
    void read();
    void settingChanged(const QDBusMessage& message);

  private:
    void attach();
    void take(std::optional<Appearance> next);

    const BusLink& link;
    std::unique_ptr<QDBusServiceWatcher> watcher;
    std::optional<Appearance> portal;
};

}  // namespace vostel
