#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <sys/resource.h>

#include <cstring>
#include <set>
#include <string>

#include "platform/linux/NetlinkMessages.h"
#include "platform/linux/NetlinkSource.h"

namespace vostel {
namespace {

using Bytes = std::vector<std::byte>;

template <typename Value>
Bytes raw(const Value& value) {
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

Bytes raw(const std::string& text) {
    const auto* data = reinterpret_cast<const std::byte*>(text.c_str());
    return {data, data + text.size() + 1};
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    left.resize((left.size() + 3) & ~std::size_t{3});
    return left;
}

Bytes attribute(int type, const Bytes& value) {
    const rtattr head{static_cast<unsigned short>(sizeof(rtattr) + value.size()),
                      static_cast<unsigned short>(type)};
    return raw(head) + value;
}

Bytes message(int type, const Bytes& content, int flags = 0, std::uint32_t sequence = 7) {
    nlmsghdr head{};
    head.nlmsg_len = static_cast<std::uint32_t>(sizeof head + content.size());
    head.nlmsg_type = static_cast<std::uint16_t>(type);
    head.nlmsg_flags = static_cast<std::uint16_t>(flags);
    head.nlmsg_seq = sequence;
    return raw(head) + content;
}

Bytes counters(std::uint64_t received, std::uint64_t sent) {
    rtnl_link_stats64 stats{};
    stats.rx_bytes = received;
    stats.tx_bytes = sent;
    return attribute(IFLA_STATS64, raw(stats));
}

Bytes link(int index, const std::string& name, const Bytes& attributes,
           unsigned flags = IFF_UP | (1u << 16)) {
    ifinfomsg head{};
    head.ifi_type = (flags & IFF_LOOPBACK) != 0 ? ARPHRD_LOOPBACK : ARPHRD_ETHER;
    head.ifi_index = index;
    head.ifi_flags = flags;
    return message(RTM_NEWLINK, raw(head) + attribute(IFLA_IFNAME, raw(name)) + attributes);
}

Bytes vlan() {
    std::uint32_t settings[4] = {1};
    return link(
        5, "eth0.5",
        counters(1ull << 40, 7) + attribute(IFLA_MASTER, raw(9)) + attribute(IFLA_LINK, raw(2)) +
            attribute(IFLA_LINK_NETNSID, raw(0)) +
            attribute(IFLA_LINKINFO, attribute(IFLA_INFO_DATA, Bytes(8)) +
                                         attribute(IFLA_INFO_KIND, raw(std::string("vlan")))) +
            attribute(IFLA_AF_SPEC | NLA_F_NESTED,
                      attribute(AF_INET, attribute(IFLA_INET_CONF, raw(settings)))));
}

TEST(NetlinkMessagesTest, ReadsAnInterface) {
    std::vector<InterfaceCounters> found;
    const Bytes datagram = link(1, "lo", counters(5, 5), IFF_UP | IFF_LOOPBACK) + vlan() +
                           link(6, "eth1", counters(1, 2), IFF_UP) + link(7, "old", {}) +
                           link(8, "", counters(1, 2)) + message(NLMSG_DONE, raw(0));
    const NetlinkAnswer answer = parseLinks(datagram, 7, found);
    EXPECT_TRUE(answer.done);
    EXPECT_EQ(answer.error, 0);
    ASSERT_EQ(found.size(), 2u) << "loopback, and what has no name or counters, is left out";
    EXPECT_EQ(found[0].name, "eth0.5");
    EXPECT_EQ(found[0].index, 5);
    EXPECT_EQ(found[0].received, 1ull << 40);
    EXPECT_EQ(found[0].sent, 7u);
    EXPECT_EQ(found[0].kind, "vlan");
    EXPECT_EQ(found[0].master, 9);
    EXPECT_EQ(found[0].link, 2);
    EXPECT_TRUE(found[0].linkElsewhere && found[0].forwards && found[0].carrier);
    EXPECT_TRUE(found[1].up && !found[1].carrier && !found[1].forwards && found[1].kind.empty());
}

// Every cut and every wrong length of a real message: nothing is read beyond the bytes (the
// sanitizers watch), nothing loops, and what came before the damage is kept.
TEST(NetlinkMessagesTest, DamagedDatagrams) {
    const Bytes first = link(2, "eth0", counters(1, 2));
    const Bytes whole = first + vlan();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        std::vector<InterfaceCounters> found;
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(parseLinks(cut, 7, found).done);
        EXPECT_EQ(found.size(), size >= first.size() ? 1u : 0u) << size;
    }
    for (std::size_t at = first.size(); at < whole.size(); ++at) {
        for (const int value : {0, 1, 3, 0x7f, 0xff}) {
            std::vector<InterfaceCounters> found;
            Bytes damaged = whole;
            damaged[at] = static_cast<std::byte>(value);
            parseLinks(damaged, 7, found);
            ASSERT_GE(found.size(), 1u);
            EXPECT_EQ(found[0].name, "eth0");
        }
    }
}

TEST(NetlinkMessagesTest, WhatADatagramSaysOfItsDump) {
    struct Row {
        const char* what;
        Bytes datagram;
        bool done;
        bool interrupted;
        int error;
        std::size_t found;
    };
    const Bytes eth0 = link(2, "eth0", counters(1, 2));
    const Row rows[] = {
        {"goes on", eth0, false, false, 0, 1},
        {"another dump's answer", message(NLMSG_DONE, raw(0), 0, 6) + eth0, false, false, 0, 1},
        {"refused", message(NLMSG_ERROR, raw(-EPERM)), true, false, EPERM, 0},
        {"refused without saying why", message(NLMSG_ERROR, {}), true, false, EPROTO, 0},
        {"ends with an error", eth0 + message(NLMSG_DONE, raw(-ENOMEM)), true, false, ENOMEM, 1},
        {"ends without a status", message(NLMSG_DONE, {}), true, false, 0, 0},
        {"a status that is no errno", message(NLMSG_DONE, raw(INT32_MIN)), true, false, EPROTO, 0},
        {"changed meanwhile", message(NLMSG_DONE, raw(0), NLM_F_DUMP_INTR), true, true, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        std::vector<InterfaceCounters> found;
        const NetlinkAnswer answer = parseLinks(row.datagram, 7, found);
        EXPECT_EQ(answer.done, row.done);
        EXPECT_EQ(answer.interrupted, row.interrupted);
        EXPECT_EQ(answer.error, row.error);
        EXPECT_EQ(found.size(), row.found);
    }
}

TEST(NetlinkMessagesTest, ReadsOwnAddresses) {
    const auto address = [](int family, int scope, const Bytes& attributes) {
        ifaddrmsg head{};
        head.ifa_family = static_cast<std::uint8_t>(family);
        head.ifa_scope = static_cast<std::uint8_t>(scope);
        head.ifa_index = 3;
        return message(RTM_NEWADDR, raw(head) + attributes);
    };
    const Bytes own = raw(in_addr{htonl(0x0a000001)});
    const Bytes peer = raw(in_addr{htonl(0x0a000002)});
    in6_addr six{};
    inet_pton(AF_INET6, "fe80::1", &six);
    std::vector<InterfaceAddress> found;
    parseAddresses(address(AF_INET, 0, attribute(IFA_ADDRESS, peer) + attribute(IFA_LOCAL, own)) +
                       address(AF_INET6, RT_SCOPE_LINK, attribute(IFA_ADDRESS, raw(six))) +
                       address(AF_INET, RT_SCOPE_HOST, attribute(IFA_LOCAL, own)) +
                       address(AF_INET6, 0, attribute(IFA_ADDRESS, own)) +
                       address(AF_UNIX, 0, attribute(IFA_ADDRESS, own)),
                   7, found);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].text, "10.0.0.1");
    EXPECT_EQ(found[0].index, 3);
    EXPECT_EQ(found[1].text, "fe80::1");
    EXPECT_TRUE(found[1].ipv6);
}

// No descriptor left: empty, and the next reading works.
TEST(NetlinkSourceTest, ComesBackAfterAFailure) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    rlimit none = before;
    none.rlim_cur = 0;
    // The undefined-behaviour sanitizer needs descriptors for its first look at a type.
    NetlinkSource().interfaces();
    NetlinkSource source;
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_TRUE(source.interfaces().empty());
    setrlimit(RLIMIT_NOFILE, &before);
    std::set<std::string> expected;
    struct if_nameindex* const all = if_nameindex();
    for (const struct if_nameindex* entry = all; entry->if_index != 0; ++entry) {
        expected.insert(entry->if_name);
    }
    if_freenameindex(all);
    expected.erase("lo");
    std::set<std::string> names;
    for (const InterfaceCounters& interface : source.interfaces()) {
        names.insert(interface.name);
    }
    EXPECT_EQ(names, expected);
}

}  // namespace
}  // namespace vostel
