#include <gtest/gtest.h>

#include <set>
#include <string>

#include "monitors/network/CountedOnce.h"

namespace vostel {
namespace {

struct Topology {
    const char* what;
    std::vector<InterfaceCounters> interfaces;
    std::set<std::string> counted;
};

struct Stacked {
    int on = 0;  // the device beneath, or the peer
    int portOf = 0;
    bool elsewhere = false;
    bool forwards = false;
    bool carrier = true;
};

InterfaceCounters make(int index, std::string name, std::string kind, Stacked place = {}) {
    return {.name = std::move(name),
            .index = index,
            .up = true,
            .carrier = place.carrier,
            .kind = std::move(kind),
            .master = place.portOf,
            .link = place.on,
            .linkElsewhere = place.elsewhere,
            .forwards = place.forwards};
}

// Each row would be counted twice, or not at all, by a rule that only looks at addresses or kinds.
TEST(CountedOnceTest, Topologies) {
    const Topology rows[] = {
        {"Ethernet and Wi-Fi", {make(2, "eth0", ""), make(3, "wlan0", "")}, {"eth0", "wlan0"}},
        {"VLAN on Ethernet", {make(2, "eth0", ""), make(3, "eth0.5", "vlan", {.on = 2})}, {"eth0"}},
        {"VLAN on a bond of two ports",
         {make(2, "eth0", "", {.portOf = 4}), make(3, "eth1", "", {.portOf = 4}),
          make(4, "bond0", "bond"), make(5, "bond0.7", "vlan", {.on = 4})},
         {"eth0", "eth1"}},
        {"bridge with an uplink on a VLAN, and a container",
         {make(2, "eth0", ""), make(3, "eth0.5", "vlan", {.on = 2, .portOf = 4}),
          make(4, "br0", "bridge"),
          make(5, "veth1", "veth", {.on = 2, .portOf = 4, .elsewhere = true})},
         {"eth0"}},
        {"WireGuard, tun and PPP over Wi-Fi",
         {make(2, "wlan0", ""), make(3, "wg0", "wireguard"), make(4, "tailscale0", "tun"),
          make(5, "ppp0", "ppp")},
         {"wlan0"}},
        {"a serial link with the Ethernet cable pulled",
         {make(2, "eth0", "", {.carrier = false}), make(3, "ppp0", "ppp")},
         {"eth0", "ppp0"}},
        {"a namespace with nothing but its tunnel", {make(2, "wg0", "wireguard")}, {"wg0"}},
        {"container host that routes",
         {make(2, "eth0", "", {.forwards = true}), make(3, "docker0", "bridge", {.forwards = true}),
          make(5, "veth1", "veth", {.on = 4, .portOf = 3, .elsewhere = true, .forwards = true}),
          make(6, "cali2", "veth", {.on = 4, .elsewhere = true, .forwards = true})},
         {"eth0"}},
        {"container host that does not route: the traffic ends at the host",
         {make(2, "eth0", ""), make(3, "br1", "bridge"),
          make(5, "veth1", "veth", {.on = 4, .portOf = 3, .elsewhere = true}),
          make(6, "veth2", "veth", {.on = 4, .elsewhere = true})},
         {"eth0", "br1", "veth2"}},
        {"inside a container, with containers of its own",
         {make(2, "eth0", "veth", {.on = 9, .elsewhere = true, .forwards = true}),
          make(3, "docker0", "bridge", {.forwards = true}),
          make(4, "veth1", "veth", {.on = 2, .portOf = 3, .elsewhere = true, .forwards = true})},
         {"eth0"}},
        {"container on a macvlan, the device beneath elsewhere under an index used here, too",
         {make(2, "wg0", "wireguard"), make(3, "eth0", "macvlan", {.on = 2, .elsewhere = true})},
         {"eth0"}},
        {"namespace with only a bridge, a VLAN on it and its cable",
         {make(2, "va", "veth", {.on = 2, .portOf = 3, .elsewhere = true}),
          make(3, "br0", "bridge"), make(4, "br0.5", "vlan", {.on = 3})},
         {"va"}},
        {"virtual machines on a routed bridge",
         {make(2, "wlan0", ""), make(3, "virbr0", "bridge", {.forwards = true}),
          make(4, "vnet0", "tun", {.portOf = 3})},
         {"wlan0"}},
        {"cable with both ends here",
         {make(2, "wlan0", ""), make(3, "a", "veth", {.on = 4}), make(4, "b", "veth", {.on = 3})},
         {"wlan0", "a"}},
        {"cable between two bridges",
         {make(2, "eth0", "", {.portOf = 5}), make(3, "a", "veth", {.on = 4, .portOf = 5}),
          make(4, "b", "veth", {.on = 3, .portOf = 6}), make(5, "br0", "bridge"),
          make(6, "br1", "bridge", {.forwards = true})},
         {"eth0"}},
        {"dummy and mirror",
         {make(2, "eth0", ""), make(3, "d", "dummy"), make(4, "ifb0", "ifb")},
         {"eth0", "d"}},
        {"a bridge alone", {make(2, "br0", "bridge")}, {"br0"}},
        {"devices that stand on each other or on themselves: ends, counts neither",
         {make(2, "x", "vlan", {.on = 3, .portOf = 3}),
          make(3, "y", "vlan", {.on = 2, .portOf = 2}),
          make(4, "eth0", "", {.on = 4, .portOf = 4})},
         {"eth0"}},
    };
    for (const Topology& row : rows) {
        SCOPED_TRACE(row.what);
        const std::vector<bool> once = countedOnce(row.interfaces);
        ASSERT_EQ(once.size(), row.interfaces.size());
        std::set<std::string> counted;
        for (std::size_t i = 0; i < once.size(); ++i) {
            if (once[i]) {
                counted.insert(row.interfaces[i].name);
            }
        }
        EXPECT_EQ(counted, row.counted);
    }
}

}  // namespace
}  // namespace vostel
