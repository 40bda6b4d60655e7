#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Descriptor.h"
#include "DiagMessage.h"

namespace vostel::nettop {

// The TCP sockets of one network namespace: the one that the process was in at the creation.
class SocketDiag {
  public:
    // Opens the kernel's socket diagnostics; nothing when they cannot be opened.
    static std::optional<SocketDiag> open();

    // True when the kernel tells about closed sockets (anybody may listen; since Linux 4.2).
    bool noticesClosing() const { return notices.get() >= 0; }

    // Visits every TCP socket of both families that can carry bytes, and the listening ones.
    // False when the answer broke off: what was visited is then not all.
    bool dump(const SocketVisitor& visit);

    // Visits the sockets that were closed since the last call.
    void drainClosed(const SocketVisitor& visit);

    // The addresses of this namespace's own interfaces, asked anew every few seconds.
    const std::vector<Address>& ownAddresses(double now);

  private:
    bool receiveAnswer(int socket, std::uint32_t sequence, bool addressAnswer,
                       const SocketVisitor& visit);

    Descriptor requests;
    Descriptor notices;
    Descriptor routes;
    std::vector<std::byte> buffer;
    std::vector<Address> addresses;
    double addressesAt = -1e9;
    std::uint32_t sequence = 0;
};

}  // namespace vostel::nettop
