#pragma once

#include <string_view>

#include "core/Setting.h"

namespace vostel {

// A field of a settings object that is one of a few choices, kept as text: rawValue(choice), found
// beside the type, names it. What the stored text means is up to the settings object, which hands
// in the choice to begin with.
template <typename Choice>
class ChoiceSetting {
  public:
    ChoiceSetting(SettingsGroup& settingsGroup, const QString& name, Choice initial)
        : group(settingsGroup), key(settingsGroup.key(name)), value(initial) {
        detail::readField<QString>(group.defaults, key);
    }
    ChoiceSetting(const ChoiceSetting&) = delete;

    ChoiceSetting& operator=(Choice choice) {
        value = choice;
        const std::string_view text = rawValue(choice);
        group.defaults.set(key, QString::fromLatin1(text.data(), static_cast<int>(text.size())));
        group.posted();
        return *this;
    }
    ChoiceSetting& operator=(const ChoiceSetting&) = delete;

    Choice operator()() const { return value; }

  private:
    SettingsGroup& group;
    QString key;
    Choice value;
};

}  // namespace vostel
