#include "monitors/gpu/GPUMonitor.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace vostel {

namespace {

constexpr int deepestClient = 2;

// A number from outside: 0 when it is missing, not a number, or negative.
double bounded(std::optional<double> value) {
    return value && std::isfinite(*value) ? std::max(0.0, *value) : 0;
}

double fraction(std::optional<double> percent) {
    return std::min(1.0, bounded(percent) / 100);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// "pid N, name"
bool parseCreator(std::string_view text, int& pid, std::string_view& name) {
    constexpr std::string_view prefix = "pid ";
    const std::size_t comma = text.find(',');
    if (!text.starts_with(prefix) || comma == std::string_view::npos) {
        return false;
    }
    const std::string_view digits = text.substr(prefix.size(), comma - prefix.size());
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    name = trimmed(text.substr(comma + 1));
    return error == std::errc() && end == digits.data() + digits.size() && pid >= 0 &&
           !name.empty();
}

void collectClients(std::span<const GPUClient> under, int depth,
                    std::map<int, GPUClientUsage>& into) {
    for (const GPUClient& client : under) {
        int pid = 0;
        std::string_view name;
        if (parseCreator(client.creator, pid, name)) {
            GPUClientUsage& usage = into[pid];
            usage.name = name;
            for (double time : client.accumulatedGPUTime) {
                usage.gpuTimeNS += bounded(time);
            }
        }
        if (depth < deepestClient) {
            collectClients(client.children, depth + 1, into);
        }
    }
}

}  // namespace

std::optional<GPUSample> GPUMonitor::sampleIORegistry(
    std::span<const GPUAccelerator> accelerators) {
    GPUSample sample;
    bool taken = false;
    for (const GPUAccelerator& accelerator : accelerators) {
        collectClients(accelerator.clients, 0, sample.apps);
        if (!accelerator.statistics) {
            continue;
        }
        const double renderer = fraction(accelerator.statistics->renderer);
        const double tiler = fraction(accelerator.statistics->tiler);
        const double candidate =
            std::max({fraction(accelerator.statistics->device), renderer, tiler});
        if (!taken || candidate > sample.stats.utilization) {
            sample.stats = {.utilization = candidate,
                            .renderer = renderer,
                            .tiler = tiler,
                            .inUseBytes = bounded(accelerator.statistics->inUse)};
            sample.accelerator = accelerator.id;
            taken = true;
        }
    }
    return taken ? std::optional(std::move(sample)) : std::nullopt;
}

}  // namespace vostel
