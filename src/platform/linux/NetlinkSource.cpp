#include "platform/linux/NetlinkSource.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace vostel {

namespace {

// The kernel fills datagrams of a dump up to 32 KiB when the reader's buffer has the room.
constexpr std::size_t datagramSize = 32768;
// Far above any machine: 65536 interfaces in datagrams of one each.
constexpr int mostDatagrams = 65536;
constexpr int attempts = 3;
constexpr int mostAnnouncements = 256;  // taken at once; the rest waits for the next reading

struct Request {
    nlmsghdr head{};
    ifinfomsg body{};  // of an address dump only the family is read, its first byte
};

}  // namespace

NetlinkSource::~NetlinkSource() {
    close();
    closeNews();
}

std::vector<InterfaceCounters> NetlinkSource::interfaces() {
    failure = 0;
    auto links = read<InterfaceCounters>(RTM_GETLINK, parseLinks);
    if (failure == 0) {
        health.succeeded();
    } else {
        health.failed("cannot list the network interfaces: " +
                      std::generic_category().message(failure));
    }
    return links;
}

std::vector<InterfaceAddress> NetlinkSource::addresses() {
    if (addressesMayHaveChanged()) {
        lastAddresses = read<InterfaceAddress>(RTM_GETADDR, parseAddresses);
        // Nothing found may be a failure: asked for again.
        known = news >= 0 && !lastAddresses.empty();
    }
    return lastAddresses;
}

// What is announced does not matter, only that something is. An announcement is taken before the
// addresses are read, so that a change in between leads to one reading too many, never to one
// too few. An overrun (ENOBUFS) means announcements were lost, and counts as one.
bool NetlinkSource::addressesMayHaveChanged() {
    if (news < 0) {
        news = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
        sockaddr_nl groups{};
        groups.nl_family = AF_NETLINK;
        groups.nl_groups = RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
        if (news >= 0 &&
            bind(news, reinterpret_cast<const sockaddr*>(&groups), sizeof groups) != 0) {
            closeNews();
        }
        return true;
    }
    for (int announcements = 0; announcements < mostAnnouncements; ++announcements) {
        char start[64];
        if (recv(news, start, sizeof start, MSG_DONTWAIT) >= 0 || errno == ENOBUFS) {
            known = false;
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            closeNews();
            return true;
        }
    }
    return !known;
}

// A dump that the kernel calls inconsistent, because the table changed meanwhile, is asked for
// again; when it goes on changing, the last answer is used: an entry may be missing or come twice.
// After a failure (overrun, refused request) one new socket is tried.
template <typename Entry>
std::vector<Entry> NetlinkSource::read(int type,
                                       NetlinkAnswer (*parse)(std::span<const std::byte>,
                                                              std::uint32_t, std::vector<Entry>&)) {
    std::vector<Entry> entries;
    int failures = 0;
    for (int attempt = 0; attempt < attempts && failures < 2; ++attempt) {
        entries.clear();
        switch (dump(type, entries, parse)) {
            case Dump::complete:
                failure = 0;
                return entries;
            case Dump::interrupted:
                break;
            case Dump::failed:
                entries.clear();
                close();
                ++failures;
                break;
        }
    }
    return entries;
}

template <typename Entry>
NetlinkSource::Dump NetlinkSource::dump(int type, std::vector<Entry>& entries,
                                        NetlinkAnswer (*parse)(std::span<const std::byte>,
                                                               std::uint32_t,
                                                               std::vector<Entry>&)) {
    failure = 0;
    if (!open() || !ask(type)) {
        failure = errno;
        return Dump::failed;
    }
    bool interrupted = false;
    for (int datagrams = 0; datagrams < mostDatagrams; ++datagrams) {
        const ssize_t size =
            recv(descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT | MSG_TRUNC);
        if (size < 0 && errno == EINTR) {
            continue;
        }
        // Nothing there although the dump has not ended, an overrun, or a datagram that was cut.
        if (size <= 0 || static_cast<std::size_t>(size) > buffer.size()) {
            failure = size < 0 ? errno : EIO;
            return Dump::failed;
        }
        const NetlinkAnswer answer =
            parse({buffer.data(), static_cast<std::size_t>(size)}, sequence, entries);
        interrupted |= answer.interrupted;
        if (answer.done) {
            failure = answer.error;
            return answer.error != 0 ? Dump::failed
                   : interrupted     ? Dump::interrupted
                                     : Dump::complete;
        }
    }
    failure = EIO;
    return Dump::failed;
}

bool NetlinkSource::open() {
    if (descriptor < 0) {
        descriptor = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
        buffer.resize(datagramSize);
    }
    return descriptor >= 0;
}

bool NetlinkSource::ask(int type) {
    Request request;
    request.head.nlmsg_len = sizeof request;
    request.head.nlmsg_type = static_cast<std::uint16_t>(type);
    request.head.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.head.nlmsg_seq = ++sequence;
    request.body.ifi_family = AF_UNSPEC;
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    return sendto(descriptor, &request, sizeof request, MSG_DONTWAIT,
                  reinterpret_cast<const sockaddr*>(&kernel),
                  sizeof kernel) == static_cast<ssize_t>(sizeof request);
}

void NetlinkSource::close() {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

void NetlinkSource::closeNews() {
    if (news >= 0) {
        ::close(news);
        news = -1;
    }
}

}  // namespace vostel
