#pragma once

#include <optional>
#include <string>
#include <vector>

#include "monitors/network/NetSample.h"

namespace vostel {

// One row of the list of interfaces.
struct InterfaceState {
    std::string id;           // the interface's name
    std::string displayName;  // the name, or "Tailscale (name)"
    NetSample current;
    std::vector<NetSample> history;  // oldest first, at most 60
    std::optional<std::string> lanIP;
    bool included = false;  // counts toward the aggregate

    bool operator==(const InterfaceState&) const = default;
};

}  // namespace vostel
