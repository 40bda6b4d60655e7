#pragma once

#include <QColor>

#include "core/Setting.h"
#include "statusbar/StatusImage.h"

namespace vostel {

// The appearance and interval that every item has unless it overrides them. Posts
// "globalSettingsChanged".
class GlobalSettings {
  public:
    static constexpr double smallestLabel = 4.0;  // points
    static constexpr double largestLabel = 9.0;

    GlobalSettings(DefaultsStore& store, NotificationCenter& center);

    // The label text colour: the label colour of `appearance` when textHex is "auto" or no colour.
    QColor text(Appearance appearance) const;

    double labelSize() const;        // points, within the bounds above
    void setLabelSize(double size);  // clamped, stored, posted

  private:
    SettingsGroup group;

  public:
    Setting<QString> foregroundHex;
    Setting<QString> backgroundHex;
    Setting<QString> textHex;
    Setting<bool> monochrome;
    Setting<double> updateInterval;  // seconds

  private:
    Setting<double> storedLabelSize;
};

}  // namespace vostel
