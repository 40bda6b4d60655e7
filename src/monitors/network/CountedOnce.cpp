#include "monitors/network/CountedOnce.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace vostel {

namespace {

// The kernel's names of link kinds (rtnl_link_ops.kind), ip-link(8).
enum class Role {
    hardware,
    cable,      // the other end may be in another namespace
    gathering,  // made of its ports
    sink,
    mirror,
    tunnel,  // and whatever is unknown: its packets probably cross something else, too
};

Role roleOf(std::string_view kind) {
    struct Row {
        std::string_view kind;
        Role role;
    };
    static constexpr Row rows[] = {
        {"", Role::hardware},          {"wwan", Role::hardware},  {"ipoib", Role::hardware},
        {"netdevsim", Role::hardware}, {"veth", Role::cable},     {"netkit", Role::cable},
        {"vxcan", Role::cable},        {"vlan", Role::cable},     {"macvlan", Role::cable},
        {"macvtap", Role::cable},      {"ipvlan", Role::cable},   {"ipvtap", Role::cable},
        {"bridge", Role::gathering},   {"bond", Role::gathering}, {"team", Role::gathering},
        {"vrf", Role::gathering},      {"hsr", Role::gathering},  {"batadv", Role::gathering},
        {"dummy", Role::sink},         {"ifb", Role::mirror},     {"nlmon", Role::mirror},
        {"vsockmon", Role::mirror},
    };
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [&](const Row& candidate) { return candidate.kind == kind; });
    return row != std::end(rows) ? row->role : Role::tunnel;
}

bool isPair(std::string_view kind) {
    return kind == "veth" || kind == "netkit" || kind == "vxcan";
}

// The kinds of border, in the order of the header. An interface that can be none is `inside`.
enum class Border { hardware, cable, port, tunnel, inside };

constexpr int deepestStack = 8;  // as deep as the kernel lets devices be stacked
constexpr std::size_t none = static_cast<std::size_t>(-1);

struct Node {
    Role role = Role::tunnel;
    Border border = Border::inside;
    std::size_t beneath = none;  // the device it stands on
    std::size_t peer = none;     // the other end of its cable
    std::size_t master = none;
    bool counted = false;
    bool reachesBorder = false;  // it is counted as border, or stands on one that is
};

std::vector<Node> stack(std::span<const InterfaceCounters> interfaces) {
    std::unordered_map<int, std::size_t> places;
    for (std::size_t i = 0; i < interfaces.size(); ++i) {
        places.emplace(interfaces[i].index, i);
    }
    const auto placeOf = [&](int index, std::size_t own) {
        const auto place = places.find(index);
        return place != places.end() && place->second != own ? place->second : none;
    };
    std::vector<Node> nodes(interfaces.size());
    for (std::size_t i = 0; i < interfaces.size(); ++i) {
        const InterfaceCounters& interface = interfaces[i];
        Node& node = nodes[i];
        node.role = roleOf(interface.kind);
        node.master = placeOf(interface.master, i);
        if (!interface.linkElsewhere) {
            (isPair(interface.kind) ? node.peer : node.beneath) = placeOf(interface.link, i);
        }
        const bool leadsOut = interface.linkElsewhere && node.role == Role::cable;
        if (node.beneath != none) {
            node.border = Border::inside;
        } else if (node.role == Role::hardware) {
            node.border = Border::hardware;
        } else if (leadsOut) {
            node.border = node.master == none ? Border::cable : Border::port;
        } else if (node.role == Role::tunnel) {
            node.border = Border::tunnel;
        }
    }
    return nodes;
}

// Carries `reachesBorder` up from devices to what stands on them and what they are ports of.
void markStacks(std::vector<Node>& nodes) {
    bool changed = true;
    for (int depth = 0; depth < deepestStack && changed; ++depth) {
        changed = false;
        const auto mark = [&](Node& node) {
            changed |= !node.reachesBorder;
            node.reachesBorder = true;
        };
        for (Node& node : nodes) {
            if (node.beneath != none && nodes[node.beneath].reachesBorder) {
                mark(node);
            }
            if (node.reachesBorder && node.master != none) {
                mark(nodes[node.master]);
            }
        }
    }
}

// Rule 3, for what is not on the border.
bool countsInside(std::span<const InterfaceCounters> interfaces, const std::vector<Node>& nodes,
                  std::size_t i, bool noBorder) {
    const Node& node = nodes[i];
    if (node.beneath != none || node.reachesBorder || node.master != none) {
        return false;
    }
    const bool endsHere = noBorder || !interfaces[i].forwards;
    switch (node.role) {
        case Role::sink:
            return true;
        case Role::gathering:
            return endsHere;
        case Role::cable:
            if (node.peer == none) {
                return endsHere;
            }
            return endsHere && i < node.peer && nodes[node.peer].master == none &&
                   (noBorder || !interfaces[node.peer].forwards);
        default:
            return false;
    }
}

}  // namespace

std::vector<bool> countedOnce(std::span<const InterfaceCounters> interfaces) {
    std::vector<Node> nodes = stack(interfaces);
    Border border = Border::inside;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (interfaces[i].carrier) {
            border = std::min(border, nodes[i].border);
        }
    }
    for (Node& node : nodes) {
        node.counted = node.border != Border::inside && node.border <= border;
        node.reachesBorder = node.counted;
    }
    markStacks(nodes);
    std::vector<bool> result(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        result[i] =
            nodes[i].counted || countsInside(interfaces, nodes, i, border == Border::inside);
    }
    return result;
}

}  // namespace vostel
