#include "DiagMessage.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <optional>

namespace vostel::nettop {

namespace {

constexpr std::uint8_t tcpListen = 10;  // TCP_LISTEN of the kernel's net/tcp_states.h
constexpr Address mappedPrefix{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 0, 0, 0, 0};

// A record at the start of `bytes`, copied because nothing promises its alignment.
template <typename Record>
std::optional<Record> recordAt(std::span<const std::byte> bytes) {
    if (bytes.size() < sizeof(Record)) {
        return std::nullopt;
    }
    Record record;
    std::memcpy(&record, bytes.data(), sizeof(Record));
    return record;
}

std::uint64_t counterAt(std::span<const std::byte> info, std::size_t offset) {
    std::uint64_t value = 0;
    if (info.size() >= offset + sizeof(value)) {
        std::memcpy(&value, info.data() + offset, sizeof(value));
    }
    return value;
}

Address addressOf(std::uint8_t family, const void* bytes) {
    Address address{};
    if (family == AF_INET) {
        address = mappedPrefix;
        std::memcpy(address.data() + 12, bytes, 4);
    } else {
        std::memcpy(address.data(), bytes, 16);
    }
    return address;
}

// Calls `visit(type, payload)` for every attribute; a length that cannot be true ends the list.
template <typename Visit>
void forEachAttribute(std::span<const std::byte> bytes, const Visit& visit) {
    while (const auto header = recordAt<nlattr>(bytes)) {
        if (header->nla_len < NLA_HDRLEN || header->nla_len > bytes.size()) {
            return;
        }
        visit(header->nla_type & NLA_TYPE_MASK,
              bytes.subspan(NLA_HDRLEN, header->nla_len - NLA_HDRLEN));
        bytes = bytes.subspan(std::min<std::size_t>(NLA_ALIGN(header->nla_len), bytes.size()));
    }
}

// Calls `visit(type, payload)` for every message of the datagram.
template <typename Visit>
DiagStatus forEachMessage(std::span<const std::byte> bytes, const Visit& visit) {
    while (const auto header = recordAt<nlmsghdr>(bytes)) {
        if (header->nlmsg_len < NLMSG_HDRLEN || header->nlmsg_len > bytes.size()) {
            return DiagStatus::more;
        }
        if (header->nlmsg_type == NLMSG_DONE) {
            return DiagStatus::done;
        }
        if (header->nlmsg_type == NLMSG_ERROR) {
            return DiagStatus::failed;
        }
        visit(header->nlmsg_type, bytes.subspan(NLMSG_HDRLEN, header->nlmsg_len - NLMSG_HDRLEN));
        bytes = bytes.subspan(std::min<std::size_t>(NLMSG_ALIGN(header->nlmsg_len), bytes.size()));
    }
    return DiagStatus::more;
}

void readCounters(std::span<const std::byte> info, SocketReading& reading) {
    reading.bytesIn = counterAt(info, offsetof(tcp_info, tcpi_bytes_received));
    const bool knowsSent = info.size() >= offsetof(tcp_info, tcpi_bytes_sent) + 8;
    reading.bytesOut = counterAt(info, knowsSent ? offsetof(tcp_info, tcpi_bytes_sent)
                                                 : offsetof(tcp_info, tcpi_bytes_acked));
}

std::optional<SocketReading> readSocket(std::span<const std::byte> payload) {
    const auto message = recordAt<inet_diag_msg>(payload);
    if (!message || (message->idiag_family != AF_INET && message->idiag_family != AF_INET6)) {
        return std::nullopt;
    }
    SocketReading reading;
    reading.cookie = static_cast<std::uint64_t>(message->id.idiag_cookie[1]) << 32U |
                     message->id.idiag_cookie[0];
    reading.inode = message->idiag_inode;
    reading.uid = message->idiag_uid;
    reading.listening = message->idiag_state == tcpListen;
    reading.local = {addressOf(message->idiag_family, message->id.idiag_src),
                     ntohs(message->id.idiag_sport)};
    reading.remote = {addressOf(message->idiag_family, message->id.idiag_dst),
                      ntohs(message->id.idiag_dport)};
    const auto rest =
        payload.subspan(std::min<std::size_t>(NLMSG_ALIGN(sizeof(inet_diag_msg)), payload.size()));
    forEachAttribute(rest, [&](int type, std::span<const std::byte> value) {
        if (type == INET_DIAG_INFO) {
            readCounters(value, reading);
        }
    });
    return reading;
}

}  // namespace

bool isLoopback(const Address& address) {
    if (std::equal(address.begin(), address.begin() + 12, mappedPrefix.begin())) {
        return address[12] == 127;
    }
    return address == Address{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
}

bool isUnspecified(const Address& address) {
    return address == Address{} || address == mappedPrefix;
}

Address mappedAddress(const std::uint8_t (&ipv4)[4]) {
    return addressOf(AF_INET, ipv4);
}

DiagStatus readDiagDatagram(std::span<const std::byte> datagram, const SocketVisitor& visit) {
    return forEachMessage(datagram, [&](int type, std::span<const std::byte> payload) {
        if (type != SOCK_DIAG_BY_FAMILY && type != TCPDIAG_GETSOCK) {
            return;
        }
        if (const auto reading = readSocket(payload)) {
            visit(*reading);
        }
    });
}

DiagStatus readAddressDatagram(std::span<const std::byte> datagram,
                               std::vector<Address>& addresses) {
    return forEachMessage(datagram, [&](int type, std::span<const std::byte> payload) {
        const auto message = recordAt<ifaddrmsg>(payload);
        if (type != RTM_NEWADDR || !message) {
            return;
        }
        const std::size_t size = message->ifa_family == AF_INET    ? 4
                                 : message->ifa_family == AF_INET6 ? 16
                                                                   : 0;
        // On a point-to-point link IFA_ADDRESS is the peer; IFA_LOCAL, where it is there, is us.
        std::optional<Address> address;
        bool local = false;
        forEachAttribute(
            payload.subspan(std::min<std::size_t>(NLMSG_ALIGN(sizeof(ifaddrmsg)), payload.size())),
            [&](int kind, std::span<const std::byte> value) {
                if (size == 0 || value.size() != size ||
                    !(kind == IFA_LOCAL || (kind == IFA_ADDRESS && !local))) {
                    return;
                }
                local = kind == IFA_LOCAL;
                address = addressOf(message->ifa_family, value.data());
            });
        if (address) {
            addresses.push_back(*address);
        }
    });
}

}  // namespace vostel::nettop
