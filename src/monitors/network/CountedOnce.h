#pragma once

#include <span>
#include <vector>

#include "platform/NetworkSource.h"

namespace vostel {

// Which interfaces to add up so that no byte is counted twice: one flag for each of `interfaces`.
// It depends on how they are stacked, never on their traffic, so it changes only when an interface
// comes, goes or loses its carrier.
//
// The sum is what crosses the border of this network namespace. A byte crosses several interfaces
// of one machine, but only one of them is the border:
//
// 1. An interface on top of another one of this namespace (VLAN, macvlan, a tunnel bound to a
//    device) is left out: the device beneath sees the same bytes. So is a bridge, bond, team or
//    VRF that has the border, or something on top of it, among its ports: the ports count.
// 2. The border is made of the first kind present that has a carrier, and of the kinds before it:
//      a. hardware;
//      b. a virtual cable (veth, macvlan, ...) whose other end is in another namespace, not a port:
//         how a container is connected;
//      c. such a cable that is a port of a bridge: a namespace with nothing but its bridge;
//      d. tunnels and user-space interfaces (WireGuard, tun/tap, PPP, GRE, ...).
//    So a tunnel counts only where nothing else leads out; otherwise its packets cross the border
//    in their wrapping, and are counted there.
// 3. What lies inside the border, cables to containers and bridges without a port on the border,
//    is left out when the system forwards what arrives there (then it appears at the border, too),
//    and counted when it does not (then it ends here). A bridge stands for its cables, and so sees
//    what this namespace exchanges with them, not what they exchange with each other. Of a cable
//    with both ends here one end counts.
// 4. Dummies count (their bytes cross nothing else), mirrors of other interfaces' traffic (ifb,
//    nlmon) never do.
//
// Known to fall short: a PPP link over a serial line is not counted while an Ethernet or Wi-Fi link
// is up, because it looks like one over that link.
std::vector<bool> countedOnce(std::span<const InterfaceCounters> interfaces);

}  // namespace vostel
