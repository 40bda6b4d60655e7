#pragma once

#include <dirent.h>

#include <string_view>

#include "platform/ProcessSource.h"
#include "platform/SystemRoots.h"

namespace vostel {

// The units of /proc/PID/stat.
struct ProcUnits {
    double ticksPerSecond = 100;
    std::uint64_t pageBytes = 4096;
};

// One /proc/PID/stat (proc(5)). The name stands in parentheses and may hold any byte, parentheses
// and line ends included, so it ends at the last ")". False, with `record` in no particular state,
// when a field up to the resident size is missing.
bool parsePidStat(std::string_view text, const ProcUnits& units, ProcessRecord& record);

// The path of the unified hierarchy ("0::") in /proc/PID/cgroup, else the one of systemd's own
// hierarchy ("name=systemd"), else "".
std::string_view cgroupPath(std::string_view text);

// The file name of the AppImage whose mount `path` lies in, as `mounts` (/proc/PID/mountinfo, see
// proc(5)) tells it; "" for other paths.
std::string_view appImageOf(std::string_view path, std::string_view mounts);

// /proc: three system calls per process, for its stat file; nothing else is opened for the list.
class ProcProcessSource : public ProcessSource {
  public:
    explicit ProcProcessSource(const SystemRoots& roots);
    ~ProcProcessSource() override;
    ProcProcessSource(const ProcProcessSource&) = delete;
    ProcProcessSource& operator=(const ProcProcessSource&) = delete;

    bool read(std::vector<ProcessRecord>& records) override;
    std::optional<ProcessDetails> details(std::int32_t pid, double startSeconds) override;

  private:
    bool openRoot();

    std::string proc;
    ProcUnits units;
    DIR* root = nullptr;
};

}  // namespace vostel
