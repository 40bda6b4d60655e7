#include "monitors/network/InterfaceMode.h"

namespace vostel {

std::string_view rawValue(InterfaceMode mode) {
    switch (mode) {
        case InterfaceMode::all:
            return "all";
        case InterfaceMode::custom:
            return "custom";
        case InterfaceMode::automatic:
            break;
    }
    return "automatic";
}

InterfaceMode interfaceModeFrom(std::optional<std::string_view> stored,
                                std::optional<bool> legacyIncludeAll) {
    for (const InterfaceMode mode :
         {InterfaceMode::all, InterfaceMode::automatic, InterfaceMode::custom}) {
        if (stored == rawValue(mode)) {
            return mode;
        }
    }
    if (!legacyIncludeAll) {
        return InterfaceMode::automatic;
    }
    return *legacyIncludeAll ? InterfaceMode::all : InterfaceMode::custom;
}

}  // namespace vostel
