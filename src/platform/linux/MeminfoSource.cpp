#include "platform/linux/MeminfoSource.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

namespace vostel {

namespace {

constexpr std::uint64_t mostBytes = std::uint64_t(1) << 53;

struct Field {
    std::string_view name;
    std::uint64_t Meminfo::* member;
};

constexpr Field fields[] = {
    {"MemTotal", &Meminfo::memTotal},
    {"MemFree", &Meminfo::memFree},
    {"Buffers", &Meminfo::buffers},
    {"Cached", &Meminfo::cached},
    {"SwapCached", &Meminfo::swapCached},
    {"Shmem", &Meminfo::shmem},
    {"SReclaimable", &Meminfo::sReclaimable},
    {"AnonPages", &Meminfo::anonPages},
    {"Zswap", &Meminfo::zswap},
};

std::string_view nextLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

// The number of that place (0 first) in a line of blank-separated words; 0 when there is none.
std::uint64_t numberAt(std::string_view line, int place) {
    for (;;) {
        const std::size_t start = line.find_first_not_of(" \t");
        if (start == std::string_view::npos) {
            return 0;
        }
        line.remove_prefix(start);
        if (place-- == 0) {
            std::uint64_t value = 0;
            const auto error = std::from_chars(line.data(), line.data() + line.size(), value).ec;
            return error == std::errc() ? value : 0;
        }
        line.remove_prefix(std::min(line.find_first_of(" \t"), line.size()));
    }
}

double difference(std::uint64_t total, std::initializer_list<std::uint64_t> parts) {
    auto rest = static_cast<double>(total);
    for (const std::uint64_t part : parts) {
        rest -= static_cast<double>(part);
    }
    return rest;
}

}  // namespace

Meminfo parseMeminfo(std::string_view text) {
    Meminfo info;
    while (!text.empty()) {
        const std::string_view line = nextLine(text);
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        for (const Field& field : fields) {
            if (line.substr(0, colon) == field.name) {
                const std::uint64_t kilobytes = numberAt(line.substr(colon + 1), 0);
                info.*field.member = kilobytes < mostBytes / 1024 ? kilobytes * 1024 : 0;
            }
        }
    }
    return info;
}

std::uint64_t parseReclaimableArc(std::string_view text) {
    std::uint64_t size = 0;
    std::uint64_t least = 0;
    while (!text.empty()) {
        const std::string_view line = nextLine(text);  // name, type, value
        if (line.starts_with("size ")) {
            size = numberAt(line, 2);
        } else if (line.starts_with("c_min ")) {
            least = numberAt(line, 2);
        }
    }
    return size > least && size < mostBytes ? size - least : 0;
}

std::uint64_t parseZramMemory(std::string_view text) {
    const std::uint64_t bytes = numberAt(nextLine(text), 2);
    return bytes < mostBytes ? bytes : 0;
}

MemoryCounters countMemory(const Meminfo& info, std::uint64_t zram, std::uint64_t reclaimableArc) {
    const std::uint64_t fileCache = info.cached > info.shmem ? info.cached - info.shmem : 0;
    const double used = std::max(
        0.0, difference(info.memTotal, {info.memFree, info.buffers, fileCache, info.sReclaimable,
                                        info.swapCached, reclaimableArc}));
    MemoryCounters counters;
    counters.active = static_cast<double>(info.anonPages) + static_cast<double>(info.shmem);
    counters.compressed = static_cast<double>(info.zswap) + static_cast<double>(zram);
    counters.wired = std::max(0.0, used - counters.active - counters.compressed);
    return counters;
}

MeminfoSource::MeminfoSource(const SystemRoots& roots)
    : proc(roots.proc),
      sys(roots.sys),
      meminfo(roots.proc + "/meminfo"),
      arcstats(roots.proc + "/spl/kstat/zfs/arcstats") {}

std::uint64_t MeminfoSource::zramMemory() {
    std::uint64_t total = 0;
    std::error_code error;
    // A device more or less is found as it comes: the folder holds a few dozen names at most.
    for (const auto& entry : std::filesystem::directory_iterator(sys + "/block", error)) {
        if (entry.path().filename().string().starts_with("zram")) {
            total +=
                parseZramMemory(readSmallFile(entry.path().string() + "/mm_stat").value_or(""));
        }
    }
    return total;
}

std::optional<MemoryCounters> MeminfoSource::counters() {
    const Meminfo info = parseMeminfo(meminfo.read());
    if (info.memTotal == 0) {
        health.failed(meminfo.error().empty() ? proc + "/meminfo tells no size" : meminfo.error());
        return std::nullopt;
    }
    health.succeeded();
    return countMemory(info, zramMemory(),
                       parseReclaimableArc(readSmallFile(arcstats).value_or("")));
}

double MeminfoSource::physicalMemory() {
    return static_cast<double>(parseMeminfo(meminfo.read()).memTotal);
}

}  // namespace vostel
