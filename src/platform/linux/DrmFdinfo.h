#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vostel {

// One engine (or group of equal engines) of a DRM client.
struct DrmEngine {
    std::string name;
    std::optional<std::uint64_t> busy;         // nanoseconds
    std::optional<std::uint64_t> cycles;       // busy, in ticks of `totalCycles`
    std::optional<std::uint64_t> totalCycles;  // gone by, busy or not
    std::uint32_t capacity = 1;                // engines in the group, 1 ... 1024
};

// What /proc/PID/fdinfo/FD says about an open DRM device (kernel: Documentation/gpu/
// drm-usage-stats.rst).
struct DrmFdinfo {
    std::string driver;
    std::string device;                   // PCI address; empty for others
    std::optional<std::uint64_t> client;  // the same for every descriptor of one opening
    std::vector<DrmEngine> engines;       // at most 64
    std::uint64_t memory = 0;             // bytes resident, all regions; on old kernels all held
};

// Empty when the text is not of a DRM device. A line that does not parse is skipped, a value that
// is too large for 64 bits too; text without an end of line is read as far as it goes.
std::optional<DrmFdinfo> parseDrmFdinfo(std::string_view text);

enum class DrmEngineKind { renderer, tiler, other };

// "render", "gfx", "rcs", ... draw or compute; "vertex-tiler", "bin", "gp" bin vertices into tiles;
// copy and video engines are the others.
DrmEngineKind drmEngineKind(std::string_view engine);

}  // namespace vostel
