#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vostel {

// What the Tailscale tool says of this machine.
struct TailscaleStatus {
    std::string dnsName;              // without the final "."; empty when it has none
    std::optional<std::string> ipv4;  // its address in the tailnet
    std::string backendState = "Unknown";
    bool online = false;
};

// Reads the answer of `tailscale status --json`. Nothing when it is no JSON object; a field of the
// wrong shape counts as missing. Texts are cut to 255 characters, the longest a DNS name can be.
std::optional<TailscaleStatus> parseTailscaleStatus(std::string_view answer);

}  // namespace vostel
