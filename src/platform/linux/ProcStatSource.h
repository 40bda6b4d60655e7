#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "platform/CPUSource.h"
#include "platform/SystemRoots.h"
#include "platform/linux/ProcFile.h"

namespace vostel {

struct ProcessorTicks {
    int id = 0;  // N of the line "cpuN"
    std::uint64_t user = 0;
    std::uint64_t system = 0;
    std::uint64_t idle = 0;
    std::uint64_t nice = 0;
};

// The "cpuN" lines of /proc/stat (proc(5)), in file order. user is user, system is system + irq +
// softirq + steal, idle is idle + iowait; guest time is inside user and nice already. Kernels
// before 2.6 print fewer fields: the missing ones count 0, a line with less than four is skipped.
std::vector<ProcessorTicks> parseProcStat(std::string_view text);

// "0-3,8,10-11" as in /sys/devices/system/cpu/*; what does not parse is skipped.
std::set<int> parseCpuList(std::string_view text);

// /proc/stat, and the kinds of processors from sysfs: cpu_core and cpu_atom of hybrid x86, else
// cpu_capacity (the lowest capacity is the efficiency kind), else one kind.
class ProcStatSource : public CPUSource {
  public:
    explicit ProcStatSource(const SystemRoots& roots);

    std::vector<std::int32_t> ticks() override;
    CoreCounts coreCounts() override;
    int activeProcessorCount() override;

  private:
    std::vector<ProcessorTicks> readProcessors();
    void readKinds(const std::vector<ProcessorTicks>& processors);

    std::string proc;
    std::string sys;
    ProcFile stat;
    std::vector<int> knownIds;  // the processors that `efficiencyIds` was read for
    std::set<int> efficiencyIds;
    CoreCounts counts;
};

}  // namespace vostel
