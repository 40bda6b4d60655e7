#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "SocketReading.h"

namespace vostel::nettop {

enum class DiagStatus {
    more,    // the answer goes on in the next datagram
    done,    // the kernel said that this was all
    failed,  // the kernel refused
};

using SocketVisitor = std::function<void(const SocketReading&)>;

// Reads one datagram of a NETLINK_SOCK_DIAG socket (linux/inet_diag.h): messages of a dump, or the
// notices of closed sockets. Calls `visit` for every whole message about a TCP socket. Messages
// that are cut short, of another kind or with lengths that do not fit are skipped; a message
// length that cannot be true ends the datagram, since nothing behind it can be found.
//
// Bytes out are tcpi_bytes_sent: what left the machine, at the time it left, sent-again bytes
// included, as the counters of the interface see it. tcpi_bytes_acked comes a round trip late and
// never reaches what was sent when a connection is cut; it is the fallback where the kernel has
// no bytes_sent (before 4.19). Bytes in are tcpi_bytes_received.
DiagStatus readDiagDatagram(std::span<const std::byte> datagram, const SocketVisitor& visit);

// Reads one datagram of the answer to RTM_GETADDR and appends the addresses of this machine.
DiagStatus readAddressDatagram(std::span<const std::byte> datagram,
                               std::vector<Address>& addresses);

}  // namespace vostel::nettop
