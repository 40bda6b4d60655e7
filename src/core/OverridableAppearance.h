#pragma once

#include "core/EffAppearance.h"
#include "core/GlobalSettings.h"
#include "core/Setting.h"

namespace vostel {

// The part of a module's settings that overrides the global appearance. An override whose text is
// no colour counts as absent, but stays in the store.
class OverridableAppearance {
  public:
    OverridableAppearance(GlobalSettings& global, SettingsGroup& group);
    virtual ~OverridableAppearance() = default;

    // Clears every override of the module; each removal stores and posts.
    virtual void revertAppearanceToGlobal();

    QColor effForeground() const;
    QColor effBackground() const;
    QColor effText(Appearance appearance) const;
    bool effMonochrome() const;
    double effInterval() const;  // seconds, within the bounds of IntervalOptions
    EffAppearance effAppearance(Appearance appearance) const;

    GlobalSettings& global;
    OptionalSetting<QString> foregroundHexOverride;
    OptionalSetting<QString> backgroundHexOverride;
    OptionalSetting<QString> textHexOverride;
    OptionalSetting<bool> monochromeOverride;
    OptionalSetting<double> intervalOverride;  // seconds
};

}  // namespace vostel
