// Any bytes as the answer of the Tailscale tool.
#include <cstdint>
#include <cstdlib>

#include "monitors/probes/TailscaleStatus.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto status = vostel::parseTailscaleStatus({reinterpret_cast<const char*>(data), size});
    // 255 characters are at most 765 bytes of UTF-8.
    if (status && (status->dnsName.size() > 765 || status->backendState.size() > 765 ||
                   (status->ipv4 && status->ipv4->find(':') != std::string::npos))) {
        std::abort();
    }
    return 0;
}
