#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vostel {

struct NvmlProcessSample {
    int pid = 0;
    std::uint64_t at = 0;    // microseconds, end of the sample period
    double utilization = 0;  // of the graphics and compute engine, 0 ... 1
};

struct NvmlMemory {
    double total = 0;  // bytes
    double used = 0;
};

// An open session with NVIDIA's management library, opened by path at run time. Any call may block
// for a long time. The session holds the cards that were asked for awake until it is destroyed. The
// library itself stays mapped. A function that the library lacks, or that fails, gives nothing.
class NvmlLibrary {
  public:
    using Device = void*;

    // Empty when the library is missing, lacks what is needed, or finds no driver.
    static std::unique_ptr<NvmlLibrary> open(const std::string& path);
    ~NvmlLibrary();
    NvmlLibrary(const NvmlLibrary&) = delete;
    NvmlLibrary& operator=(const NvmlLibrary&) = delete;

    // The card at a PCI address like "0000:01:00.0", without touching another card where the
    // library can do so; where it cannot, only when `mayTouchAll`. Null when there is none.
    Device device(const std::string& address, bool mayTouchAll) const;

    std::string name(Device device) const;
    std::optional<double> utilization(Device device) const;  // 0 ... 1
    std::optional<NvmlMemory> memory(Device device) const;

    // Samples newer than `since` (NvmlProcessSample::at; 0: all that the driver still has).
    std::vector<NvmlProcessSample> processSamples(Device device, std::uint64_t since) const;

    // Processes that have a context on the card, each once.
    std::vector<int> runningProcesses(Device device) const;

  private:
    struct Functions;
    explicit NvmlLibrary(std::unique_ptr<Functions> found);

    std::unique_ptr<Functions> functions;
};

}  // namespace vostel
