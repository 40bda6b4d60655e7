// What a kernel might say of a DRM client, whatever it is: parsed, and put through the accounting
// as walks one second apart. Texts are separated by NUL bytes; each is two descriptors of a walk.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/linux/DrmFdinfo.h"
#include "platform/linux/DrmLedger.h"

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

bool isFraction(double value) {
    return value >= 0 && value <= 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    vostel::DrmLedger ledger;
    double before = 0;
    for (int walk = 0; walk < 16 && !rest.empty(); ++walk) {
        const std::string_view text = rest.substr(0, rest.find('\0'));
        rest.remove_prefix(std::min(text.size() + 1, rest.size()));
        const auto info = vostel::parseDrmFdinfo(text);
        if (!info) {
            continue;
        }
        require(!info->driver.empty() && info->engines.size() <= 64);
        double most = 0;  // nanoseconds that a second has on these engines
        for (const vostel::DrmEngine& engine : info->engines) {
            require(engine.capacity >= 1 && engine.capacity <= 1024 && !engine.name.empty());
            most += 2e9 * engine.capacity;
        }
        ledger.observe(walk, 3, {{"card", 1, "a", *info}, {"card", 2, "b", *info}});
        const auto load = ledger.load("card");
        require(isFraction(load.device) && isFraction(load.renderer) && isFraction(load.tiler));
        double sum = 0;
        for (const vostel::GPUClient& client : ledger.clients("card")) {
            for (double time : client.accumulatedGPUTime) {
                require(std::isfinite(time) && time >= 0);
                sum += time;
            }
        }
        require(sum >= before && sum <= before + 3 * most);
        before = sum;
    }
    return 0;
}
