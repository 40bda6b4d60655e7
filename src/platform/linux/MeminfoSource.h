#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/MemorySource.h"
#include "platform/SystemRoots.h"
#include "platform/linux/ProcFile.h"

namespace vostel {

// The fields of /proc/meminfo (proc(5)) that count, in bytes; absent ones are 0.
struct Meminfo {
    std::uint64_t memTotal = 0;
    std::uint64_t memFree = 0;
    std::uint64_t buffers = 0;
    std::uint64_t cached = 0;
    std::uint64_t swapCached = 0;
    std::uint64_t shmem = 0;
    std::uint64_t sReclaimable = 0;
    std::uint64_t anonPages = 0;
    std::uint64_t zswap = 0;
};

// Lines that do not parse are skipped. Values above 2^53 bytes are no memory and count as 0.
Meminfo parseMeminfo(std::string_view text);

// The reclaimable part of the ZFS cache in bytes, from /proc/spl/kstat/zfs/arcstats: what it holds
// above its lower bound c_min.
std::uint64_t parseReclaimableArc(std::string_view text);

// Bytes that a zram device occupies: the third number of its mm_stat
// (Documentation/admin-guide/blockdev/zram.rst).
std::uint64_t parseZramMemory(std::string_view text);

// used = MemTotal - MemFree - Buffers - (Cached - Shmem) - SReclaimable - SwapCached - ARC, in the
// parts active = AnonPages + Shmem, compressed = Zswap + zram, wired = what is left, never below 0.
MemoryCounters countMemory(const Meminfo& info, std::uint64_t zram, std::uint64_t reclaimableArc);

class MeminfoSource : public MemorySource {
  public:
    explicit MeminfoSource(const SystemRoots& roots);

    std::optional<MemoryCounters> counters() override;
    double physicalMemory() override;

  private:
    std::uint64_t zramMemory();

    std::string proc;
    std::string sys;
    ProcFile meminfo;
    std::string arcstats;
};

}  // namespace vostel
