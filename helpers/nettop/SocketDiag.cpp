#include "SocketDiag.h"

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vostel::nettop {

namespace {

// The kernel fills at most 32 KiB of a dump into one datagram (net/netlink/af_netlink.c).
constexpr std::size_t datagramSize = 64 * 1024;
constexpr int noticeBuffer = 4 * 1024 * 1024;  // some thousand closed sockets between readings
constexpr double addressSeconds = 5;

// States of net/tcp_states.h that can carry bytes or name a port's owner: all but SYN_RECV (3),
// TIME_WAIT (6), CLOSE (7) and NEW_SYN_RECV (12), which have no counters.
constexpr std::uint32_t wantedStates =
    1U << 1 | 1U << 2 | 1U << 4 | 1U << 5 | 1U << 8 | 1U << 9 | 1U << 10 | 1U << 11;

Descriptor openNetlink(int protocol) {
    Descriptor opened(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, protocol));
    if (opened) {
        const timeval limit{1, 0};  // the kernel answers at once; never hang if it does not
        setsockopt(opened.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    }
    return opened;
}

Descriptor openNotices() {
    Descriptor opened = openNetlink(NETLINK_SOCK_DIAG);
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups =
        1U << (SKNLGRP_INET_TCP_DESTROY - 1) | 1U << (SKNLGRP_INET6_TCP_DESTROY - 1);
    if (!opened ||
        bind(opened.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return Descriptor();
    }
    if (setsockopt(opened.get(), SOL_SOCKET, SO_RCVBUFFORCE, &noticeBuffer, sizeof noticeBuffer)) {
        // Without CAP_NET_ADMIN what the system lets everybody have (net.core.rmem_max).
        setsockopt(opened.get(), SOL_SOCKET, SO_RCVBUF, &noticeBuffer, sizeof noticeBuffer);
    }
    return opened;
}

}  // namespace

std::optional<SocketDiag> SocketDiag::open() {
    SocketDiag result;
    result.requests = openNetlink(NETLINK_SOCK_DIAG);
    if (!result.requests) {
        return std::nullopt;
    }
    result.notices = openNotices();
    result.routes = openNetlink(NETLINK_ROUTE);
    result.buffer.resize(datagramSize);
    return result;
}

bool SocketDiag::receiveAnswer(int socket, std::uint32_t expected, bool addressAnswer,
                               const SocketVisitor& visit) {
    for (;;) {
        const ssize_t size = recv(socket, buffer.data(), buffer.size(), 0);
        if (size < 0 && errno == EINTR) {
            continue;
        }
        if (size < static_cast<ssize_t>(sizeof(nlmsghdr))) {
            return false;
        }
        nlmsghdr header;
        std::memcpy(&header, buffer.data(), sizeof header);
        if (header.nlmsg_seq != expected) {
            continue;  // the rest of an answer that was given up
        }
        const std::span<const std::byte> datagram(buffer.data(), static_cast<std::size_t>(size));
        const DiagStatus status = addressAnswer ? readAddressDatagram(datagram, addresses)
                                                : readDiagDatagram(datagram, visit);
        if (status != DiagStatus::more) {
            return status == DiagStatus::done;
        }
    }
}

bool SocketDiag::dump(const SocketVisitor& visit) {
    // The older request asks for both families at once: one walk through the kernel's tables, whose
    // size goes with the machine's memory, instead of two.
    struct {
        nlmsghdr header;
        inet_diag_req request;
    } message{};
    message.header.nlmsg_len = sizeof message;
    message.header.nlmsg_type = TCPDIAG_GETSOCK;
    message.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    message.header.nlmsg_seq = ++sequence;
    message.request.idiag_family = AF_INET;
    message.request.idiag_ext = 1U << (INET_DIAG_INFO - 1);
    message.request.idiag_states = wantedStates;
    return send(requests.get(), &message, sizeof message, 0) == sizeof message &&
           receiveAnswer(requests.get(), sequence, false, visit);
}

void SocketDiag::drainClosed(const SocketVisitor& visit) {
    // At most what fits the buffer a few times over, so that a flood cannot hold this up forever.
    for (int count = 0; notices && count < 50'000; ++count) {
        const ssize_t size = recv(notices.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size < 0 && (errno == EINTR || errno == ENOBUFS)) {
            continue;  // ENOBUFS: some notices were lost, the next ones are there
        }
        if (size <= 0) {
            return;
        }
        readDiagDatagram({buffer.data(), static_cast<std::size_t>(size)}, visit);
    }
}

const std::vector<Address>& SocketDiag::ownAddresses(double now) {
    if (!routes || now - addressesAt < addressSeconds) {
        return addresses;
    }
    addressesAt = now;
    struct {
        nlmsghdr header;
        ifaddrmsg request;
    } message{};
    message.header.nlmsg_len = sizeof message;
    message.header.nlmsg_type = RTM_GETADDR;
    message.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    message.header.nlmsg_seq = ++sequence;
    addresses.clear();
    if (send(routes.get(), &message, sizeof message, 0) == sizeof message) {
        receiveAnswer(routes.get(), sequence, true, {});
    }
    std::sort(addresses.begin(), addresses.end());
    return addresses;
}

}  // namespace vostel::nettop
