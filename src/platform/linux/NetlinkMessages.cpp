#include "platform/linux/NetlinkMessages.h"

#include <arpa/inet.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>

namespace vostel {

namespace {

using Bytes = std::span<const std::byte>;

// Places of "forwarding" in the kernel's tables of settings: the IPv4 table starts to count at 1
// (IPV4_DEVCONF_FORWARDING in linux/ip.h), the IPv6 one at 0 (DEVCONF_FORWARDING in linux/ipv6.h).
constexpr std::size_t forwardingPlaceIPv4 = 0;
constexpr std::size_t forwardingPlaceIPv6 = 0;

// A value in bytes of any alignment; nothing when they are too few.
template <typename Value>
std::optional<Value> valueAt(Bytes bytes, std::size_t offset = 0) {
    if (bytes.size() < sizeof(Value) || offset > bytes.size() - sizeof(Value)) {
        return std::nullopt;
    }
    Value value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

Bytes after(Bytes bytes, std::size_t count) {
    return bytes.subspan(std::min(count, bytes.size()));
}

std::string_view textOf(Bytes bytes, std::size_t longest) {
    const char* text = reinterpret_cast<const char*>(bytes.data());
    return {text, strnlen(text, std::min(bytes.size(), longest))};
}

// visit(type, value) for each whole attribute.
template <typename Visit>
void walkAttributes(Bytes bytes, Visit visit) {
    while (const auto head = valueAt<rtattr>(bytes)) {
        if (head->rta_len < sizeof(rtattr) || head->rta_len > bytes.size()) {
            return;
        }
        visit(head->rta_type & NLA_TYPE_MASK,
              bytes.subspan(RTA_LENGTH(0), head->rta_len - RTA_LENGTH(0)));
        bytes = after(bytes, RTA_ALIGN(static_cast<std::size_t>(head->rta_len)));
    }
}

// visit(type, content) for each whole message of `sequence` that carries content.
template <typename Visit>
NetlinkAnswer walkMessages(Bytes bytes, std::uint32_t sequence, Visit visit) {
    NetlinkAnswer answer;
    while (const auto head = valueAt<nlmsghdr>(bytes)) {
        if (head->nlmsg_len < sizeof(nlmsghdr) || head->nlmsg_len > bytes.size()) {
            break;
        }
        if (head->nlmsg_seq == sequence) {
            const Bytes content = bytes.subspan(NLMSG_HDRLEN, head->nlmsg_len - NLMSG_HDRLEN);
            answer.interrupted |= (head->nlmsg_flags & NLM_F_DUMP_INTR) != 0;
            if (head->nlmsg_type == NLMSG_ERROR || head->nlmsg_type == NLMSG_DONE) {
                // An error is a negative errno; so is the status that ends a dump.
                // A dump that ends without a status ended well.
                const auto status = valueAt<std::int32_t>(content);
                const bool well = status ? *status == 0 : head->nlmsg_type == NLMSG_DONE;
                const bool isErrno = status && *status < 0 && *status > -4096;
                answer.done = true;
                answer.error = well ? 0 : isErrno ? -*status : EPROTO;
                break;
            }
            visit(head->nlmsg_type, content);
        }
        bytes = after(bytes, NLMSG_ALIGN(static_cast<std::size_t>(head->nlmsg_len)));
    }
    return answer;
}

bool forwardingIn(Bytes settings, std::size_t place) {
    return valueAt<std::uint32_t>(settings, place * sizeof(std::uint32_t)).value_or(0) != 0;
}

// IFLA_AF_SPEC: one nest for each address family, in it the family's table of settings.
bool parseForwards(Bytes families) {
    bool forwards = false;
    walkAttributes(families, [&](int family, Bytes specifics) {
        walkAttributes(specifics, [&](int type, Bytes settings) {
            forwards |= (family == AF_INET && type == IFLA_INET_CONF &&
                         forwardingIn(settings, forwardingPlaceIPv4)) ||
                        (family == AF_INET6 && type == IFLA_INET6_CONF &&
                         forwardingIn(settings, forwardingPlaceIPv6));
        });
    });
    return forwards;
}

std::string parseKind(Bytes linkInfo) {
    std::string kind;
    walkAttributes(linkInfo, [&](int type, Bytes value) {
        if (type == IFLA_INFO_KIND) {
            kind = textOf(value, IFNAMSIZ);
        }
    });
    return kind;
}

void parseLink(Bytes content, std::vector<InterfaceCounters>& interfaces) {
    const auto head = valueAt<ifinfomsg>(content);
    if (!head || head->ifi_index <= 0 || (head->ifi_flags & IFF_LOOPBACK) != 0 ||
        head->ifi_type == ARPHRD_LOOPBACK) {
        return;
    }
    InterfaceCounters interface;
    interface.index = head->ifi_index;
    interface.up = (head->ifi_flags & IFF_UP) != 0;
    interface.carrier = interface.up && (head->ifi_flags & IFF_LOWER_UP) != 0;
    bool counted = false;
    walkAttributes(after(content, NLMSG_ALIGN(sizeof(ifinfomsg))), [&](int type, Bytes value) {
        switch (type) {
            case IFLA_IFNAME:
                interface.name = textOf(value, IFNAMSIZ);
                break;
            case IFLA_STATS64: {
                const auto received =
                    valueAt<std::uint64_t>(value, offsetof(rtnl_link_stats64, rx_bytes));
                const auto sent =
                    valueAt<std::uint64_t>(value, offsetof(rtnl_link_stats64, tx_bytes));
                counted = received && sent;
                interface.received = received.value_or(0);
                interface.sent = sent.value_or(0);
                break;
            }
            case IFLA_LINKINFO:
                interface.kind = parseKind(value);
                break;
            case IFLA_MASTER:
                interface.master = valueAt<std::int32_t>(value).value_or(0);
                break;
            case IFLA_LINK:
                interface.link = valueAt<std::int32_t>(value).value_or(0);
                break;
            case IFLA_LINK_NETNSID:
                interface.linkElsewhere = true;
                break;
            case IFLA_AF_SPEC:
                interface.forwards = parseForwards(value);
                break;
            default:
                break;
        }
    });
    if (counted && !interface.name.empty()) {
        interfaces.push_back(std::move(interface));
    }
}

void parseAddress(Bytes content, std::vector<InterfaceAddress>& addresses) {
    const auto head = valueAt<ifaddrmsg>(content);
    if (!head || head->ifa_scope == RT_SCOPE_HOST ||
        (head->ifa_family != AF_INET && head->ifa_family != AF_INET6)) {
        return;
    }
    const bool ipv6 = head->ifa_family == AF_INET6;
    const std::size_t size = ipv6 ? sizeof(in6_addr) : sizeof(in_addr);
    // On a point-to-point interface IFA_ADDRESS is the peer and IFA_LOCAL the own address;
    // elsewhere IPv6 has only IFA_ADDRESS.
    Bytes local;
    Bytes address;
    walkAttributes(after(content, NLMSG_ALIGN(sizeof(ifaddrmsg))), [&](int type, Bytes value) {
        if (value.size() == size && type == IFA_LOCAL) {
            local = value;
        } else if (value.size() == size && type == IFA_ADDRESS) {
            address = value;
        }
    });
    const Bytes own = local.empty() ? address : local;
    char text[INET6_ADDRSTRLEN];
    if (!own.empty() && inet_ntop(head->ifa_family, own.data(), text, sizeof text) != nullptr) {
        addresses.push_back({static_cast<int>(head->ifa_index), ipv6, text});
    }
}

}  // namespace

NetlinkAnswer parseLinks(Bytes datagram, std::uint32_t sequence,
                         std::vector<InterfaceCounters>& interfaces) {
    return walkMessages(datagram, sequence, [&](int type, Bytes content) {
        if (type == RTM_NEWLINK) {
            parseLink(content, interfaces);
        }
    });
}

NetlinkAnswer parseAddresses(Bytes datagram, std::uint32_t sequence,
                             std::vector<InterfaceAddress>& addresses) {
    return walkMessages(datagram, sequence, [&](int type, Bytes content) {
        if (type == RTM_NEWADDR) {
            parseAddress(content, addresses);
        }
    });
}

}  // namespace vostel
