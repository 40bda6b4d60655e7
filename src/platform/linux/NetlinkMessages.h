#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/NetworkSource.h"

namespace vostel {

// The bytes of rtnetlink answers (rtnetlink(7), netlink(7)). Nothing here trusts a length: a
// message that does not fit ends its datagram, an attribute that does not fit ends its message's
// attributes, an attribute that is too short for its value counts as absent.

// What one datagram of a dump said besides its entries.
struct NetlinkAnswer {
    bool done = false;         // the dump ends here, well or with `error`
    bool interrupted = false;  // the table changed meanwhile: the dump may be inconsistent
    int error = 0;             // errno value of the kernel's refusal, 0: none
};

// Appends the interfaces of one datagram of an RTM_GETLINK dump. Only messages of `sequence` count.
// Left out: loopback, an interface without a name or without 64-bit counters.
NetlinkAnswer parseLinks(std::span<const std::byte> datagram, std::uint32_t sequence,
                         std::vector<InterfaceCounters>& interfaces);

// Appends the IPv4 and IPv6 addresses of one datagram of an RTM_GETADDR dump: the interface's own
// address, not its peer's. Left out: addresses of host scope (loopback), other families.
NetlinkAnswer parseAddresses(std::span<const std::byte> datagram, std::uint32_t sequence,
                             std::vector<InterfaceAddress>& addresses);

}  // namespace vostel
