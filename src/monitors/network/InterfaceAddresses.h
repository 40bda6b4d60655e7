#pragma once

#include <optional>
#include <string>

namespace vostel {

// The addresses of one interface, numeric.
struct InterfaceAddresses {
    std::optional<std::string> ipv4;
    std::optional<std::string> ipv6Global;
    std::optional<std::string> ipv6LinkLocal;

    // The one to show: IPv4, else global IPv6, else link-local IPv6.
    const std::optional<std::string>& best() const {
        return ipv4 ? ipv4 : ipv6Global ? ipv6Global : ipv6LinkLocal;
    }
};

}  // namespace vostel
