#pragma once

#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include <QString>
#include <QStringList>

#include "core/DefaultsStore.h"
#include "core/NotificationCenter.h"

namespace vostel {

// What the fields of one settings object share: the store, the key prefix ("cpu.") and the
// notification that every write posts ("cpuSettingsChanged").
class SettingsGroup {
  public:
    SettingsGroup(DefaultsStore& store, NotificationCenter& center, QString keyPrefix,
                  std::string notificationName)
        : defaults(store),
          notifications(center),
          prefix(std::move(keyPrefix)),
          notification(std::move(notificationName)) {}

    QString key(const QString& name) const { return prefix + name; }
    void posted() { notifications.post(notification); }

    DefaultsStore& defaults;
    NotificationCenter& notifications;
    const QString prefix;
    const std::string notification;
};

namespace detail {

// What a field takes of a text and of a list. An imported file may hold megabytes, and what shows
// them goes through all of it at every tick.
constexpr qsizetype longestText = 256;  // UTF-16 units
constexpr qsizetype longestList = 256;

inline QString bounded(const QString& text) {
    return text.left(text.size() > longestText && text[longestText - 1].isHighSurrogate()
                         ? longestText - 1
                         : longestText);
}
inline QStringList bounded(const QStringList& list) {
    QStringList result = list.mid(0, longestList);
    for (QString& each : result) {
        each = bounded(each);
    }
    return result;
}
template <typename T>
T bounded(T value) {
    return value;
}
template <typename T>
std::optional<T> bounded(const std::optional<T>& value) {
    return value ? std::optional(bounded(*value)) : std::nullopt;
}

template <typename T>
std::optional<T> readValue(const PropertyList& list, const QString& key) {
    if constexpr (std::is_same_v<T, bool>) {
        return list.boolean(key);
    } else if constexpr (std::is_same_v<T, double>) {
        return list.number(key);
    } else if constexpr (std::is_same_v<T, QString>) {
        return bounded(list.text(key));
    } else {
        static_assert(std::is_same_v<T, QStringList>);
        return bounded(list.textList(key));
    }
}

// Reads the key for a field and tells the store what the field takes there.
template <typename T>
std::optional<T> readField(DefaultsStore& store, const QString& key) {
    store.know(key, [](const PropertyList& list, const QString& each) {
        return readValue<T>(list, each).has_value();
    });
    return readValue<T>(store.values(), key);
}

}  // namespace detail

// A field of a settings object: bool, double, QString or QStringList. It reads its key once, at
// construction (a value of the wrong type counts as absent), and every assignment writes the store
// and posts the notification, also when the value is the same.
template <typename T>
class Setting {
  public:
    Setting(SettingsGroup& settingsGroup, const QString& name, T defaultValue)
        : group(settingsGroup), key(settingsGroup.key(name)) {
        value = detail::readField<T>(group.defaults, key).value_or(std::move(defaultValue));
    }
    Setting(const Setting&) = delete;

    Setting& operator=(T newValue) {
        value = detail::bounded(newValue);
        group.defaults.set(key, value);
        group.posted();
        return *this;
    }
    Setting& operator=(const Setting&) = delete;

    const T& operator()() const { return value; }

  private:
    SettingsGroup& group;
    QString key;
    T value;
};

// A field that may be absent: assigning std::nullopt removes the key.
template <typename T>
class OptionalSetting {
  public:
    OptionalSetting(SettingsGroup& settingsGroup, const QString& name)
        : group(settingsGroup), key(settingsGroup.key(name)) {
        value = detail::readField<T>(group.defaults, key);
    }
    OptionalSetting(const OptionalSetting&) = delete;

    OptionalSetting& operator=(std::optional<T> newValue) {
        value = detail::bounded(newValue);
        if (value) {
            group.defaults.set(key, *value);
        } else {
            group.defaults.remove(key);
        }
        group.posted();
        return *this;
    }
    OptionalSetting& operator=(const OptionalSetting&) = delete;

    const std::optional<T>& operator()() const { return value; }

  private:
    SettingsGroup& group;
    QString key;
    std::optional<T> value;
};

}  // namespace vostel
