#pragma once

#include <optional>
#include <string_view>

namespace vostel {

// Where the graph draws the two directions. Upload always stands above download.
enum class DisplayMode {
    stacked,   // download from the bottom, upload on top of it: the height is the sum
    mirrored,  // from a middle line, upload upward and download downward
    opposing,  // towards each other: download from the bottom, upload from the top
};

enum class DisplayStyle { line, bars };

// The texts that the store keeps: "stacked", "mirrored", "opposing"; "line", "bars".
std::string_view rawValue(DisplayMode mode);
std::string_view rawValue(DisplayStyle style);

// What a stored text means; missing or unknown: stacked, line.
DisplayMode displayModeFrom(std::optional<std::string_view> stored);
DisplayStyle displayStyleFrom(std::optional<std::string_view> stored);

}  // namespace vostel
