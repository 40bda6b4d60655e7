#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/linux/DrmLedger.h"

namespace vostel {

// Finds the processes that hold DRM devices. Looking through all descriptors of all processes is
// what costs, so a process is looked through in its first three walks, and after that only every 4
// to 7 seconds (15 to 30 when nobody looks), not all in the same walk; descriptors known to be of a
// DRM device are read in every walk.
class DrmWalker {
  public:
    explicit DrmWalker(std::string procRoot);

    // `nodes`: the device nodes that may be asked, "renderD128" or "card0", and the card of each.
    // Descriptors of other nodes are not opened. Processes of other users are left out where the
    // system hides them.
    std::vector<DrmDescriptor> walk(double now, bool someoneLooks,
                                    const std::map<std::string, std::string>& nodes);

    // Why the last walk found nobody, as in SourceHealth::failed(); empty when it could look.
    const std::string& error() const { return problem; }

  private:
    struct Held {
        int descriptor = 0;
        std::string node;
    };
    struct Process {
        std::uint64_t walk = 0;
        double lookedAt = 0;
        int looks = 0;
        std::string name;
        std::vector<Held> held;
    };

    static bool isDue(int pid, const Process& process, double now, bool someoneLooks);
    void look(int procDirectory, int pid, Process& process) const;
    bool read(int pid, const Process& process, const Held& held, const std::string& card,
              std::vector<DrmDescriptor>& into) const;

    std::string proc;
    std::string problem;
    std::unordered_map<int, Process> processes;
    std::uint64_t walks = 0;
};

}  // namespace vostel
