#include "platform/linux/DrmFdinfo.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace vostel {

namespace {

constexpr std::size_t mostEngines = 64;
constexpr std::size_t mostRegions = 32;
constexpr std::size_t longestName = 64;
constexpr std::uint32_t largestCapacity = 1024;

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// A number and, when there is one, its unit behind blanks.
bool takeNumber(std::string_view text, std::uint64_t& value, std::string_view& unit) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) {
        return false;
    }
    const std::string_view rest = text.substr(static_cast<std::size_t>(end - text.data()));
    if (!rest.empty() && !isBlank(rest.front())) {
        return false;
    }
    unit = trimmed(rest);
    return true;
}

bool takeBytes(std::string_view text, std::uint64_t& bytes) {
    std::string_view unit;
    if (!takeNumber(text, bytes, unit)) {
        return false;
    }
    const int shift = unit.empty() || unit == "B" ? 0
                      : unit == "KiB"             ? 10
                      : unit == "MiB"             ? 20
                      : unit == "GiB"             ? 30
                                                  : -1;
    if (shift < 0 || bytes > (std::numeric_limits<std::uint64_t>::max() >> shift)) {
        return false;
    }
    bytes <<= shift;
    return true;
}

bool takePrefix(std::string_view& key, std::string_view prefix) {
    if (!key.starts_with(prefix) || key.size() == prefix.size() ||
        key.size() - prefix.size() > longestName) {
        return false;
    }
    key.remove_prefix(prefix.size());
    return true;
}

// Older kernels say "memory" for what newer ones call "resident", newer ones print both, and some
// drivers only the total of what is allocated: the best spelling of a region counts.
struct Region {
    std::string_view name;
    std::uint64_t bytes = 0;
    int rank = -1;
};

class Parser {
  public:
    void line(std::string_view text) {
        const std::size_t colon = text.find(':');
        std::string_view key = trimmed(text.substr(0, colon));
        if (colon == std::string_view::npos || !takePrefix(key, "drm-")) {
            return;
        }
        const std::string_view value = trimmed(text.substr(colon + 1));
        if (key == "driver" || key == "pdev") {
            (key == "driver" ? result.driver : result.device) = value.substr(0, longestName);
        } else if (key == "client-id") {
            std::uint64_t id = 0;
            std::string_view unit;
            if (takeNumber(value, id, unit)) {
                result.client = id;
            }
        } else if (!engineLine(key, value)) {
            memoryLine(key, value);
        }
    }

    std::optional<DrmFdinfo> take() {
        if (result.driver.empty()) {
            return std::nullopt;
        }
        // A capacity may come without an engine that is in use.
        std::erase_if(result.engines,
                      [](const DrmEngine& engine) { return !engine.busy && !engine.cycles; });
        for (const Region& region : regions) {
            const std::uint64_t room = std::numeric_limits<std::uint64_t>::max() - result.memory;
            result.memory += std::min(region.bytes, room);
        }
        return std::move(result);
    }

  private:
    DrmEngine* engine(std::string_view name) {
        const auto found = std::ranges::find(result.engines, name, &DrmEngine::name);
        if (found != result.engines.end()) {
            return &*found;
        }
        if (result.engines.size() >= mostEngines) {
            return nullptr;
        }
        result.engines.emplace_back().name = name;
        return &result.engines.back();
    }

    bool engineLine(std::string_view key, std::string_view value) {
        struct Field {
            std::string_view prefix;
            std::string_view unit;
        };
        // The longer prefix first: "engine-capacity-" begins like an engine.
        constexpr std::array<Field, 4> fields{
            {{"engine-capacity-", ""}, {"engine-", "ns"}, {"total-cycles-", ""}, {"cycles-", ""}}};
        std::size_t field = 0;
        while (field < fields.size() && !takePrefix(key, fields[field].prefix)) {
            ++field;
        }
        if (field == fields.size()) {
            return false;
        }
        std::uint64_t number = 0;
        std::string_view unit;
        if (!takeNumber(value, number, unit) || (!unit.empty() && unit != fields[field].unit)) {
            return true;
        }
        DrmEngine* target = engine(key);
        if (target == nullptr) {
            return true;
        }
        if (field == 0) {
            target->capacity =
                static_cast<std::uint32_t>(std::clamp<std::uint64_t>(number, 1, largestCapacity));
        } else {
            (field == 1   ? target->busy
             : field == 2 ? target->totalCycles
                          : target->cycles) = number;
        }
        return true;
    }

    void memoryLine(std::string_view key, std::string_view value) {
        constexpr std::array<std::string_view, 3> spellings{"total-", "memory-", "resident-"};
        int rank = 0;
        while (rank < 3 && !takePrefix(key, spellings[static_cast<std::size_t>(rank)])) {
            ++rank;
        }
        std::uint64_t bytes = 0;
        if (rank == 3 || !takeBytes(value, bytes)) {
            return;
        }
        auto region = std::ranges::find(regions, key, &Region::name);
        if (region == regions.end()) {
            if (regions.size() >= mostRegions) {
                return;
            }
            regions.push_back({.name = key});
            region = std::prev(regions.end());
        }
        if (rank >= region->rank) {
            region->rank = rank;
            region->bytes = bytes;
        }
    }

    DrmFdinfo result;
    std::vector<Region> regions;
};

}  // namespace

std::optional<DrmFdinfo> parseDrmFdinfo(std::string_view text) {
    Parser parser;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        parser.line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parser.take();
}

DrmEngineKind drmEngineKind(std::string_view engine) {
    // i915: render, compute; xe: rcs, ccs; amdgpu: gfx, compute; v3d: bin, render, csd (compute
    // shaders); panfrost: fragment, vertex-tiler, compute-only; panthor: panthor; msm: gpu;
    // etnaviv: 2D, 3D; lima: gp (vertices and tiles), pp (pixels).
    constexpr std::array<std::string_view, 13> renderers{
        "render", "gfx", "3d",  "3D",      "compute", "compute-only", "fragment", "rcs",
        "ccs",    "csd", "gpu", "panthor", "pp"};
    constexpr std::array<std::string_view, 4> tilers{"vertex-tiler", "bin", "gp", "tiler"};
    return std::ranges::find(renderers, engine) != renderers.end() ? DrmEngineKind::renderer
           : std::ranges::find(tilers, engine) != tilers.end()     ? DrmEngineKind::tiler
                                                                   : DrmEngineKind::other;
}

}  // namespace vostel
