#pragma once

#include "core/OverridableAppearance.h"

namespace vostel {

namespace detail {
// A base class of its own, so that the group exists before the fields that use it.
struct GroupHolder {
    SettingsGroup group;
};
}  // namespace detail

// What every module's settings object begins with: its group, its appearance overrides and its
// label.
class ModuleSettings : private detail::GroupHolder, public OverridableAppearance {
  public:
    ModuleSettings(DefaultsStore& store, NotificationCenter& center, GlobalSettings& globalSettings,
                   const QString& prefix, const std::string& notification)
        : GroupHolder{SettingsGroup(store, center, prefix, notification)},
          OverridableAppearance(globalSettings, GroupHolder::group),
          label(GroupHolder::group, QStringLiteral("label"), QString()) {}

    const std::string& changeNotification() const { return GroupHolder::group.notification; }

    Setting<QString> label;  // drawn under the image; empty hides it

  protected:
    using GroupHolder::group;
};

}  // namespace vostel
