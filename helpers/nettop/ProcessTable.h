#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Descriptor.h"
#include "TrafficLedger.h"

namespace vostel::nettop {

struct ProcessStat {
    std::string name;
    std::uint64_t startTime = 0;  // clock ticks since boot
    bool ended = false;           // waits only for its parent to take notice (a zombie)
};

// /proc/PID/stat (proc(5)): "pid (name) state ppid ...". The name may hold blanks and parentheses.
// Nothing when fields are missing.
std::optional<ProcessStat> parseProcessStat(std::string_view text);

// The inode of "socket:[123]", 0 for any other text.
std::uint32_t parseSocketLink(std::string_view text);

// What of /proc is known, kept so that a reading costs little: a process is looked at when it
// appears and when a socket without a known holder has to be found.
class ProcessTable {
  public:
    explicit ProcessTable(const std::string& procRoot);

    // Lists /proc again. Returns the pids that have gone since the last call.
    std::vector<int> refresh();

    // Who the process is now; nothing when it has ended.
    std::optional<Holder> identify(int pid) const;

    // Who the process was when it was last looked at, also if it went with the last refresh().
    std::optional<Holder> remembered(int pid) const;

    // Looks through the descriptors of processes for the inodes in `wanted` (inode to user), and
    // calls `found` for each; ends when all are found. Looked at first: processes that appeared
    // since the last search, then those in `known`, then those of the right user, then the rest.
    // The descriptors in `known` (by pid) are not followed: a server may have thousands.
    using Found = std::function<void(std::uint32_t inode, const Holder&)>;
    using Known = std::unordered_map<int, std::unordered_set<int>>;
    using Wanted = std::unordered_map<std::uint32_t, std::uint32_t>;
    void search(Wanted wanted, const Known& known, const Found& found);

    // Whether the process's descriptor still is that socket.
    bool stillHolds(const HeldSocket& socket) const;

    // A process in each network namespace, by the namespace's inode. Those that may not be looked
    // at are left out.
    std::map<ino_t, int> namespaces() const;

  private:
    struct Entry {
        Holder holder;
        std::uint64_t generation = 0;
        uid_t uid = 0;
        ino_t networkNamespace = 0;
        bool kernelThread = false;
        bool searched = false;
    };
    Entry inspect(int pid) const;
    std::vector<int> order(const Wanted& wanted, const Known& known) const;
    void searchOne(int pid, const std::unordered_set<int>* known, Wanted& wanted,
                   const Found& found) const;

    Descriptor root;
    std::map<int, Entry> entries;
    std::map<int, Holder> departed;
    std::uint64_t generation = 0;
};

}  // namespace vostel::nettop
