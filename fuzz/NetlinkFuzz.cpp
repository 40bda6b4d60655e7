// Any bytes as a datagram of a link or address dump, and any interfaces as a topology.
#include <cstdlib>
#include <cstring>

#include "monitors/network/CountedOnce.h"
#include "platform/linux/NetlinkMessages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::byte> datagram(reinterpret_cast<const std::byte*>(data), size);
    // The sequence of the first message, so that most inputs get past that check.
    std::uint32_t sequence = 0;
    if (size >= 12) {
        std::memcpy(&sequence, data + 8, sizeof sequence);
    }
    std::vector<vostel::InterfaceCounters> interfaces;
    std::vector<vostel::InterfaceAddress> addresses;
    vostel::parseLinks(datagram, sequence, interfaces);
    vostel::parseAddresses(datagram, sequence, addresses);
    for (const vostel::InterfaceCounters& interface : interfaces) {
        if (interface.name.empty() || interface.name.size() > 16 || interface.kind.size() > 16) {
            std::abort();
        }
    }
    if (vostel::countedOnce(interfaces).size() != interfaces.size()) {
        std::abort();
    }
    return 0;
}
