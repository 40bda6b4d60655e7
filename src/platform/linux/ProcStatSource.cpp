#include "platform/linux/ProcStatSource.h"

#include <algorithm>
#include <charconv>

namespace vostel {

namespace {

constexpr int mostProcessors = 8192;  // NR_CPUS of the largest kernels

bool takeNumber(std::string_view& text, std::uint64_t& value) {
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

}  // namespace

std::vector<ProcessorTicks> parseProcStat(std::string_view text) {
    std::vector<ProcessorTicks> result;
    while (text.starts_with("cpu")) {
        std::size_t end = text.find('\n');
        if (end == std::string_view::npos) {
            break;  // a line without its end was cut off: its last number may be, too
        }
        std::string_view line = text.substr(3, end - 3);
        text.remove_prefix(end + 1);
        std::uint64_t id = 0;
        if (line.empty() || line.front() == ' ' || !takeNumber(line, id) || id >= mostProcessors) {
            continue;  // the sum line, or not ours
        }
        std::uint64_t fields[8] = {};  // user nice system idle iowait irq softirq steal
        int count = 0;
        while (count < 8 && takeNumber(line, fields[count])) {
            ++count;
        }
        if (count >= 4) {
            result.push_back({.id = static_cast<int>(id),
                              .user = fields[0],
                              .system = fields[2] + fields[5] + fields[6] + fields[7],
                              .idle = fields[3] + fields[4],
                              .nice = fields[1]});
        }
    }
    return result;
}

std::set<int> parseCpuList(std::string_view text) {
    std::set<int> result;
    while (!text.empty()) {
        const std::size_t comma = std::min(text.find(','), text.size());
        std::string_view range = text.substr(0, comma);
        text.remove_prefix(std::min(comma + 1, text.size()));
        std::uint64_t first = 0;
        if (!takeNumber(range, first)) {
            continue;
        }
        std::uint64_t last = first;
        if (range.starts_with('-')) {
            range.remove_prefix(1);
            if (!takeNumber(range, last)) {
                continue;
            }
        }
        for (std::uint64_t id = first; id <= last && id < mostProcessors; ++id) {
            result.insert(static_cast<int>(id));
        }
    }
    return result;
}

ProcStatSource::ProcStatSource(const SystemRoots& roots)
    : proc(roots.proc), sys(roots.sys), stat(roots.proc + "/stat") {}

std::vector<ProcessorTicks> ProcStatSource::readProcessors() {
    std::vector<ProcessorTicks> processors = parseProcStat(stat.read());
    if (!processors.empty()) {
        health.succeeded();
    } else {
        health.failed(stat.error().empty() ? proc + "/stat names no processors" : stat.error());
    }
    readKinds(processors);
    if (counts.efficiency > 0) {
        std::stable_partition(processors.begin(), processors.end(), [this](const auto& processor) {
            return efficiencyIds.contains(processor.id);
        });
    }
    return processors;
}

// Kinds are read again only when processors came or went.
void ProcStatSource::readKinds(const std::vector<ProcessorTicks>& processors) {
    const bool known =
        std::equal(processors.begin(), processors.end(), knownIds.begin(), knownIds.end(),
                   [](const ProcessorTicks& processor, int id) { return processor.id == id; });
    if (known) {
        return;
    }
    knownIds.clear();
    for (const ProcessorTicks& processor : processors) {
        knownIds.push_back(processor.id);
    }
    const auto core = readSmallFile(sys + "/devices/cpu_core/cpus");
    const auto atom = readSmallFile(sys + "/devices/cpu_atom/cpus");
    efficiencyIds.clear();
    if (core && atom) {
        efficiencyIds = parseCpuList(*atom);
    } else {
        std::map<std::uint64_t, std::set<int>> byCapacity;
        for (int id : knownIds) {
            const auto text = readSmallFile(sys + "/devices/system/cpu/cpu" + std::to_string(id) +
                                            "/cpu_capacity");
            std::uint64_t capacity = 0;
            std::string_view view = text ? std::string_view(*text) : std::string_view();
            if (!takeNumber(view, capacity)) {
                byCapacity.clear();
                break;
            }
            byCapacity[capacity].insert(id);
        }
        if (byCapacity.size() >= 2) {
            efficiencyIds = byCapacity.begin()->second;
        }
    }
    counts = {};
    for (int id : knownIds) {
        ++(efficiencyIds.contains(id) ? counts.efficiency : counts.performance);
    }
    if (counts.efficiency == 0 || counts.performance == 0) {
        counts = {};
    }
}

std::vector<std::int32_t> ProcStatSource::ticks() {
    std::vector<std::int32_t> result;
    for (const ProcessorTicks& processor : readProcessors()) {
        for (std::uint64_t value :
             {processor.user, processor.system, processor.idle, processor.nice}) {
            result.push_back(static_cast<std::int32_t>(static_cast<std::uint32_t>(value)));
        }
    }
    return result;
}

CPUSource::CoreCounts ProcStatSource::coreCounts() {
    if (knownIds.empty()) {
        readProcessors();
    }
    return counts;
}

int ProcStatSource::activeProcessorCount() {
    if (knownIds.empty()) {
        readProcessors();
    }
    return std::max(1, static_cast<int>(knownIds.size()));
}

}  // namespace vostel
