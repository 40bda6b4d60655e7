#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/SourceHealth.h"

namespace vostel {

// One network interface of this network namespace at one moment.
struct InterfaceCounters {
    std::string name;
    int index = 0;               // never used twice while the machine runs, unlike the name
    std::uint64_t received = 0;  // bytes since the interface was made
    std::uint64_t sent = 0;
    bool up = false;       // switched on by its administrator
    bool carrier = false;  // up, and its lower layer carries
    // Which kind of virtual interface: "bridge", "bond", "vlan", "wireguard", "veth", "tun", ...;
    // empty for hardware.
    std::string kind;
    int master = 0;              // index of the bridge, bond, ... that this is a port of; 0: none
    int link = 0;                // index of the device beneath it, or of a veth's peer; 0: none
    bool linkElsewhere = false;  // `link` is an index of another network namespace
    bool forwards = false;       // the system routes what arrives here on to other interfaces
};

struct InterfaceAddress {
    int index = 0;  // of its interface
    bool ipv6 = false;
    std::string text;  // numeric, without a scope suffix
};

// Interfaces and their addresses. Loopback interfaces are left out of both.
class NetworkSource {
  public:
    virtual ~NetworkSource() = default;

    SourceHealth health;  // of the readings

    // In kernel order. Empty when they cannot be read; the next call tries again.
    virtual std::vector<InterfaceCounters> interfaces() = 0;
    virtual std::vector<InterfaceAddress> addresses() = 0;
};

}  // namespace vostel
