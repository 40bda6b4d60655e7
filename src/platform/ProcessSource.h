#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/SourceHealth.h"

namespace vostel {

// What one look at the process list tells of one process.
struct ProcessRecord {
    std::int32_t pid = 0;
    bool kernelThread = false;
    double startSeconds = 0;  // on Clock::seconds(); never changes, tells apart owners of one pid
    double cpuSeconds = 0;    // user and system time used since its start, all threads
    std::uint64_t residentBytes = 0;
    std::string comm = {};  // the kernel's short name: any bytes but NUL
};

struct ProcessDetails {
    std::vector<std::string> arguments;  // empty for kernel threads; any bytes but NUL
    std::string executable;              // "" when it may not be known
    std::string cgroup;                  // path in the unified or systemd hierarchy, "" if none
    std::string folder = {};             // working directory, "" when it may not be known
    std::string image = {};              // file name of the AppImage that the program lies in
};

// The native process list. read() is for one thread at a time; details() may be called from any.
class ProcessSource {
  public:
    virtual ~ProcessSource() = default;

    SourceHealth health;  // of the readings

    // Replaces `records` with all visible processes, by ascending pid. The vector and the names in
    // it keep their memory from call to call. False when there is no list to read.
    virtual bool read(std::vector<ProcessRecord>& records) = 0;

    // Slower facts, for the few processes that are shown. Nothing when the process has ended or
    // when its pid belongs to another one by now (`startSeconds` as in its record; below 0 asks for
    // whoever has the pid).
    virtual std::optional<ProcessDetails> details(std::int32_t pid, double startSeconds) = 0;
};

}  // namespace vostel
