#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "SocketReading.h"

namespace vostel::nettop {

using NamespaceId = std::uint32_t;

// Who holds a descriptor of a socket. The start time (clock ticks since boot) tells two processes
// with the same pid apart; 0 where it could not be learned.
struct Holder {
    int pid = 0;
    std::uint64_t startTime = 0;
    int descriptor = -1;
    std::string name;
};

struct TrafficRow {
    int pid = 0;
    std::string name;
    std::uint64_t bytesIn = 0;
    std::uint64_t bytesOut = 0;
    bool operator==(const TrafficRow&) const = default;
};

// A socket whose holder is known, for a look whether it still is.
struct HeldSocket {
    std::uint32_t inode = 0;
    int pid = 0;
    int descriptor = -1;
};

// Turns readings of sockets into byte totals of processes. A socket's growth since its last reading
// goes to whoever holds it now, so that a total only ever grows: closing a socket, handing it to
// another process or connecting it anew takes nothing away.
//
// One reading is: observe() and observeClosed() for every socket, finishNamespace() for each
// namespace that was read, hold() for what was found for wanted(), then finishReading(). rows()
// gives a block at any time between readings. No system call is made here.
class TrafficLedger {
  public:
    static constexpr std::size_t maximumSockets = 65536;
    static constexpr std::size_t maximumProcesses = 4096;
    static constexpr int lingeringBlocks = 10;  // a process that ended stays in so many blocks

    // An open socket. Listening ones are remembered only to know whose a port is.
    void observe(NamespaceId space, const SocketReading& reading);

    // The last counters of a socket that is gone. One that was never observed goes to the process
    // that listens on its port, or else to `opener` (what saw it connect), or else to nobody.
    void observeClosed(NamespaceId space, const SocketReading& reading,
                       const std::optional<Holder>& opener = std::nullopt);

    // All open sockets of this namespace have been observed in this reading. `noticesClosing`:
    // observeClosed will be called for those that are missing.
    void finishNamespace(NamespaceId space, bool noticesClosing);

    // The namespace is out of reach from now on.
    void forgetNamespace(NamespaceId space);

    // The inodes whose holder should be looked for now, with the user that made each socket. An
    // inode whose holder was not found is asked for again ever more rarely (every 64th reading in
    // the end).
    std::unordered_map<std::uint32_t, std::uint32_t> wanted() const;
    void hold(std::uint32_t inode, const Holder& holder);
    // Who was looked for and has not been held since was not found.
    void searched();

    // Every `parts`-th held socket, beginning with `part`.
    std::vector<HeldSocket> held(std::size_t part, std::size_t parts) const;
    // By pid, the descriptors that were seen open as known sockets in this reading.
    std::unordered_map<int, std::unordered_set<int>> knownDescriptors() const;
    // The holder has closed or handed on the descriptor.
    void release(std::uint32_t inode);

    // The living processes that have rows, with their start times.
    std::vector<Holder> owners() const;
    void processGone(int pid);

    void finishReading();

    // The rows of one block, by pid. A process that ended before it was ever in a block stands in
    // its first one with zeros, so that a reader that takes differences gets all of its bytes.
    std::vector<TrafficRow> rows();

    std::size_t socketCount() const { return sockets.size(); }

  private:
    struct Key {
        NamespaceId space;
        std::uint64_t cookie;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const {
            return std::hash<std::uint64_t>{}(key.cookie * 0x9e3779b97f4a7c15ULL + key.space);
        }
    };
    struct Socket {
        SocketReading last;
        std::uint64_t pendingIn = 0;  // grown, not yet given to a process
        std::uint64_t pendingOut = 0;
        std::uint64_t owner = 0;  // serial of the process; 0: none
        int descriptor = -1;
        std::uint64_t seenAt = 0;  // reading
        std::uint64_t nextSearch = 0;
        int searches = 0;
        int ownerless = 0;  // readings
        int missing = 0;    // readings of its namespace without it
        bool fromTheStart = false;
    };
    struct Process {
        Holder holder;
        std::uint64_t bytesIn = 0;
        std::uint64_t bytesOut = 0;
        std::size_t sockets = 0;
        int goneFor = -1;  // blocks; -1: lives
        bool shown = false;
    };

    static void grow(Socket& socket, const SocketReading& reading);
    void settle(Socket& socket);
    std::uint64_t processSerial(const Holder& holder);
    Process* ownerOf(const Socket& socket);
    std::uint64_t listenerOwner(NamespaceId space, const Endpoint& local);
    void disown(Socket& socket);
    void eraseSocket(const Key& key);
    void makeRoomForProcess();

    std::unordered_map<Key, Socket, KeyHash> sockets;
    std::unordered_map<std::uint32_t, Key> byInode;
    std::unordered_map<std::uint64_t, Key> listeners;      // by namespace and port
    std::unordered_map<std::uint64_t, Process> processes;  // by serial
    std::unordered_map<int, std::uint64_t> byPid;
    std::uint64_t reading = 0;
    std::uint64_t lastSerial = 0;
};

// A name as it may stand in a row: UTF-8 with neither control characters nor commas, each of those
// and each byte that is not UTF-8 replaced by "?". An empty name becomes "?".
std::string printableName(std::string_view name);

// One block of lines, see main.cpp. `secondsOfDay` 0 to 86400.
std::string formatBlock(double secondsOfDay, std::string_view sight,
                        const std::vector<TrafficRow>& rows);

}  // namespace vostel::nettop
