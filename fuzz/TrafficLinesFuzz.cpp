// The traffic helper's output, any bytes, cut into any pieces: the first byte says how long.
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "monitors/nettraffic/TrafficLines.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::size_t piece = static_cast<std::size_t>(data[0]) + 1;
    std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    vostel::TrafficLines lines(1);
    while (!rest.empty()) {
        const auto result = lines.feed(rest.substr(0, piece));
        rest.remove_prefix(std::min(piece, rest.size()));
        if (!result) {
            continue;
        }
        double before = HUGE_VAL;
        for (const vostel::ProcessTraffic& row : *result) {
            const double sum = row.down + row.up;
            if (!(row.down >= 0 && row.up >= 0 && sum > 0 && sum <= before && std::isfinite(sum))) {
                std::abort();
            }
            before = sum;
        }
        if (result->size() > vostel::TrafficLines::mostDelivered) {
            std::abort();
        }
    }
    return 0;
}
