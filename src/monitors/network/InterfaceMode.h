#pragma once

#include <optional>
#include <string_view>

namespace vostel {

// Which interfaces count toward the graph.
enum class InterfaceMode { all, automatic, custom };

// The text that the store keeps: "all", "automatic" or "custom".
std::string_view rawValue(InterfaceMode mode);

// The mode that the store holds: `stored` when it is one of the three texts; else by
// `legacyIncludeAll`, the boolean of older versions (true: all, false: custom); else automatic.
InterfaceMode interfaceModeFrom(std::optional<std::string_view> stored,
                                std::optional<bool> legacyIncludeAll);

}  // namespace vostel
