#include "platform/linux/NvmlLibrary.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <utility>

namespace vostel {

namespace {

// The binary interface, from the public reference of the library (NVML API reference, versions 450
// to 590). nvmlReturn_t:
constexpr int success = 0;
constexpr int insufficientSize = 7;

struct Utilization {  // nvmlUtilization_t, percent
    unsigned gpu;
    unsigned memory;
};

struct Memory {  // nvmlMemory_t, bytes
    unsigned long long total;
    unsigned long long free;
    unsigned long long used;
};

struct PciInfo {  // nvmlPciInfo_t of nvmlDeviceGetPciInfo_v3
    char busIdLegacy[16];
    unsigned domain;
    unsigned bus;
    unsigned device;
    unsigned pciDeviceId;
    unsigned pciSubSystemId;
    char busId[32];
};

struct ProcessUtilization {  // nvmlProcessUtilizationSample_t
    unsigned pid;
    unsigned long long timeStamp;  // microseconds
    unsigned smUtil;               // percent
    unsigned memUtil;
    unsigned encUtil;
    unsigned decUtil;
};

struct ProcessInfo {  // nvmlProcessInfo_t of the _v2 and _v3 functions
    unsigned pid;
    unsigned long long usedGpuMemory;
    unsigned gpuInstanceId;
    unsigned computeInstanceId;
};

constexpr unsigned mostEntries = 65536;
constexpr unsigned mostCards = 256;

// Calls `fill(array, count)` with more and more room until everything fits.
template <typename Entry, typename Fill>
std::vector<Entry> filled(const Fill& fill) {
    std::vector<Entry> entries(128);
    for (int attempt = 0; attempt < 4; ++attempt) {
        auto count = static_cast<unsigned>(entries.size());
        const int result = fill(entries.data(), &count);
        if (result == success) {
            entries.resize(std::min<std::size_t>(count, entries.size()));
            return entries;
        }
        if (result != insufficientSize) {
            break;
        }
        entries.resize(std::min<std::size_t>(
            std::max<std::size_t>(entries.size() * 2, std::size_t(count) + 16), mostEntries));
    }
    return {};
}

// "00000000:01:00.0" of the library and "0000:01:00.0" of the kernel.
bool sameAddress(std::string_view library, std::string_view kernel) {
    const auto stripped = [](std::string_view address) {
        const std::size_t first = address.find_first_not_of('0');
        return first == std::string_view::npos ? std::string_view() : address.substr(first);
    };
    return std::ranges::equal(stripped(library), stripped(kernel), [](char a, char b) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'F' ? char(c - 'A' + 'a') : c; };
        return lower(a) == lower(b);
    });
}

}  // namespace

struct NvmlLibrary::Functions {
    int (*init)() = nullptr;
    int (*shutdown)() = nullptr;
    int (*count)(unsigned*) = nullptr;
    int (*byIndex)(unsigned, Device*) = nullptr;
    int (*byAddress)(const char*, Device*) = nullptr;
    int (*pciInfo)(Device, PciInfo*) = nullptr;
    int (*name)(Device, char*, unsigned) = nullptr;
    int (*utilization)(Device, Utilization*) = nullptr;
    int (*memory)(Device, Memory*) = nullptr;
    int (*processUtilization)(Device, ProcessUtilization*, unsigned*, unsigned long long) = nullptr;
    std::array<int (*)(Device, unsigned*, ProcessInfo*), 2> running{};  // compute, graphics

    explicit Functions(void* library) {
        const auto find = [library](auto& function, std::initializer_list<const char*> names) {
            for (const char* symbol : names) {
                if (function == nullptr) {
                    function =
                        reinterpret_cast<std::decay_t<decltype(function)>>(dlsym(library, symbol));
                }
            }
        };
        find(init, {"nvmlInit_v2"});
        find(shutdown, {"nvmlShutdown"});
        find(count, {"nvmlDeviceGetCount_v2"});
        find(byIndex, {"nvmlDeviceGetHandleByIndex_v2"});
        find(byAddress, {"nvmlDeviceGetHandleByPciBusId_v2"});
        find(pciInfo, {"nvmlDeviceGetPciInfo_v3"});
        find(name, {"nvmlDeviceGetName"});
        find(utilization, {"nvmlDeviceGetUtilizationRates"});
        find(memory, {"nvmlDeviceGetMemoryInfo"});
        find(processUtilization, {"nvmlDeviceGetProcessUtilization"});
        // Without a version suffix the entries have another layout.
        find(running[0], {"nvmlDeviceGetComputeRunningProcesses_v3",
                          "nvmlDeviceGetComputeRunningProcesses_v2"});
        find(running[1], {"nvmlDeviceGetGraphicsRunningProcesses_v3",
                          "nvmlDeviceGetGraphicsRunningProcesses_v2"});
    }
};

std::unique_ptr<NvmlLibrary> NvmlLibrary::open(const std::string& path) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr) {
        return nullptr;
    }
    auto functions = std::make_unique<Functions>(library);
    dlclose(library);  // stays mapped
    const bool findsCards = functions->byAddress != nullptr ||
                            (functions->count != nullptr && functions->byIndex != nullptr &&
                             functions->pciInfo != nullptr);
    if (functions->init == nullptr || functions->shutdown == nullptr || !findsCards ||
        functions->init() != success) {
        return nullptr;
    }
    return std::unique_ptr<NvmlLibrary>(new NvmlLibrary(std::move(functions)));
}

NvmlLibrary::NvmlLibrary(std::unique_ptr<Functions> found) : functions(std::move(found)) {}

NvmlLibrary::~NvmlLibrary() {
    functions->shutdown();
}

NvmlLibrary::Device NvmlLibrary::device(const std::string& address, bool mayTouchAll) const {
    Device device = nullptr;
    if (functions->byAddress != nullptr) {
        return functions->byAddress(address.c_str(), &device) == success ? device : nullptr;
    }
    unsigned count = 0;
    if (!mayTouchAll || functions->count(&count) != success) {
        return nullptr;
    }
    for (unsigned i = 0; i < std::min(count, mostCards); ++i) {
        PciInfo info{};
        if (functions->byIndex(i, &device) == success &&
            functions->pciInfo(device, &info) == success) {
            info.busId[sizeof info.busId - 1] = '\0';
            if (sameAddress(info.busId, address)) {
                return device;
            }
        }
    }
    return nullptr;
}

std::string NvmlLibrary::name(Device device) const {
    std::array<char, 97> text{};
    if (functions->name == nullptr ||
        functions->name(device, text.data(), static_cast<unsigned>(text.size() - 1)) != success) {
        return {};
    }
    return text.data();
}

std::optional<double> NvmlLibrary::utilization(Device device) const {
    Utilization rates{};
    if (functions->utilization == nullptr || functions->utilization(device, &rates) != success) {
        return std::nullopt;
    }
    return std::min(1.0, rates.gpu / 100.0);
}

std::optional<NvmlMemory> NvmlLibrary::memory(Device device) const {
    Memory memory{};
    if (functions->memory == nullptr || functions->memory(device, &memory) != success) {
        return std::nullopt;
    }
    return NvmlMemory{static_cast<double>(memory.total), static_cast<double>(memory.used)};
}

std::vector<NvmlProcessSample> NvmlLibrary::processSamples(Device device,
                                                           std::uint64_t since) const {
    std::vector<NvmlProcessSample> samples;
    if (functions->processUtilization == nullptr) {
        return samples;
    }
    const auto entries = filled<ProcessUtilization>([&](ProcessUtilization* at, unsigned* count) {
        return functions->processUtilization(device, at, count, since);
    });
    for (const ProcessUtilization& entry : entries) {
        // Rows of no process or of nonsense come along with some drivers.
        if (entry.pid > 0 && entry.pid <= 0x7fffffff && entry.timeStamp > since &&
            entry.smUtil <= 100) {
            samples.push_back({.pid = static_cast<int>(entry.pid),
                               .at = entry.timeStamp,
                               .utilization = entry.smUtil / 100.0});
        }
    }
    return samples;
}

std::vector<int> NvmlLibrary::runningProcesses(Device device) const {
    std::set<int> pids;
    for (const auto& running : functions->running) {
        if (running == nullptr) {
            continue;
        }
        const auto entries = filled<ProcessInfo>(
            [&](ProcessInfo* at, unsigned* count) { return running(device, count, at); });
        for (const ProcessInfo& entry : entries) {
            if (entry.pid > 0 && entry.pid <= 0x7fffffff) {
                pids.insert(static_cast<int>(entry.pid));
            }
        }
    }
    return {pids.begin(), pids.end()};
}

}  // namespace vostel
