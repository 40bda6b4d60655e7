#pragma once

#include <cstddef>
#include <vector>

namespace vostel {

// Appends to a history, oldest first, and drops the oldest beyond `cap`.
template <typename T>
void appendCapped(std::vector<T>& history, const T& value, std::size_t cap) {
    history.push_back(value);
    if (history.size() > cap) {
        history.erase(history.begin(),
                      history.begin() + static_cast<std::ptrdiff_t>(history.size() - cap));
    }
}

}  // namespace vostel
