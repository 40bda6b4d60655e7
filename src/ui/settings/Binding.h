#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "core/Setting.h"

namespace vostel {

// What a settings row edits: how its value is read and how it is written. Whatever it refers to
// outlives the row.
template <typename T>
struct Binding {
    std::function<T()> get;
    std::function<void(T)> set;
};

template <typename T>
Binding<T> bound(Setting<T>& setting) {
    return {[&setting] { return setting(); }, [&setting](T value) { setting = std::move(value); }};
}

template <typename T>
Binding<std::optional<T>> bound(OptionalSetting<T>& setting) {
    return {[&setting] { return setting(); },
            [&setting](std::optional<T> value) { setting = std::move(value); }};
}

}  // namespace vostel
