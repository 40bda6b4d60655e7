#pragma once

#include <optional>

#include <QDBusMessage>
#include <QObject>
#include <QVariant>

#include "statusbar/StatusImage.h"

namespace vostel {

// Whether the desktop is dark or light: the desktop portal's colour scheme where there is one, else
// the toolkit's palette. Asks once, without waiting, and listens; never polls.
class DesktopAppearance final : public QObject {
    Q_OBJECT

  public:
    DesktopAppearance();

    // Until the portal has answered, the palette's.
    Appearance current() const;

    // The portal's number for org.freedesktop.appearance color-scheme (1 dark, 2 light), however
    // many variants it is wrapped in. Empty: no preference, or nothing that makes sense.
    static std::optional<Appearance> fromPortal(QVariant value);

  Q_SIGNALS:
    void changed();

  private Q_SLOTS:
    void settingChanged(const QDBusMessage& message);

  private:
    void take(std::optional<Appearance> next);

    std::optional<Appearance> portal;
};

}  // namespace vostel
