#pragma once

#include <array>
#include <compare>
#include <cstdint>

namespace vostel::nettop {

// An IP address of either family in the 16 bytes of IPv6; IPv4 as ::ffff:a.b.c.d (RFC 4291,
// 2.5.5.2), so that both ends of a connection compare alike whichever family the socket has.
using Address = std::array<std::uint8_t, 16>;

struct Endpoint {
    Address address{};
    std::uint16_t port = 0;
    auto operator<=>(const Endpoint&) const = default;
};

// True for 127.0.0.0/8, ::1 and the IPv4 loopback addresses in IPv6 form.
bool isLoopback(const Address& address);
bool isUnspecified(const Address& address);  // 0.0.0.0 or ::
Address mappedAddress(const std::uint8_t (&ipv4)[4]);

// One TCP socket as the kernel reported it once.
struct SocketReading {
    std::uint64_t cookie = 0;  // never used twice while the machine runs
    std::uint32_t inode =
        0;                  // of the descriptor; 0: no process holds the socket (any more, or yet)
    std::uint32_t uid = 0;  // who made it
    bool listening = false;
    Endpoint local;
    Endpoint remote;
    // Payload bytes since the connection began: received in order, and sent including what was
    // sent again.
    std::uint64_t bytesIn = 0;
    std::uint64_t bytesOut = 0;
};

}  // namespace vostel::nettop
