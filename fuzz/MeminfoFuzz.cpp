#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/linux/MeminfoSource.h"
#include "platform/linux/ProcStatSource.h"

// Whatever a file of memory counters or processor ticks holds: bounded, never negative, no number
// that is none.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const vostel::MemoryCounters counters =
        vostel::countMemory(vostel::parseMeminfo(text), vostel::parseZramMemory(text),
                            vostel::parseReclaimableArc(text));
    for (const double bytes : {counters.active, counters.wired, counters.compressed}) {
        if (!std::isfinite(bytes) || bytes < 0 || bytes > 0x1p55) {
            std::abort();
        }
    }
    if (vostel::parseProcStat(text).size() > size || vostel::parseCpuList(text).size() > 8192) {
        std::abort();
    }
    return 0;
}
