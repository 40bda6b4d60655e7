#include "monitors/network/DisplayMode.h"

namespace vostel {

std::string_view rawValue(DisplayMode mode) {
    switch (mode) {
        case DisplayMode::mirrored:
            return "mirrored";
        case DisplayMode::opposing:
            return "opposing";
        case DisplayMode::stacked:
            break;
    }
    return "stacked";
}

std::string_view rawValue(DisplayStyle style) {
    return style == DisplayStyle::bars ? "bars" : "line";
}

DisplayMode displayModeFrom(std::optional<std::string_view> stored) {
    for (const DisplayMode mode : {DisplayMode::mirrored, DisplayMode::opposing}) {
        if (stored == rawValue(mode)) {
            return mode;
        }
    }
    return DisplayMode::stacked;
}

DisplayStyle displayStyleFrom(std::optional<std::string_view> stored) {
    return stored == rawValue(DisplayStyle::bars) ? DisplayStyle::bars : DisplayStyle::line;
}

}  // namespace vostel
