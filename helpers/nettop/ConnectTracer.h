#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "Descriptor.h"
#include "TraceEvent.h"
#include "TrafficLedger.h"

namespace vostel::nettop {

// Remembers which process began each outgoing connection, for those that come and go between two
// readings: the kernel's notice of a closed socket does not name a process. Source: the kernel's
// tracepoint sock:inet_sock_set_state, narrowed to a connection's first two steps, in ring buffers
// that are read once for each reading; nothing wakes up for an event. It needs CAP_PERFMON and a
// mounted tracefs that may be read (CAP_DAC_READ_SEARCH); without them nothing is known, and
// nothing else changes.
class ConnectTracer {
  public:
    ConnectTracer();
    ~ConnectTracer();
    ConnectTracer(const ConnectTracer&) = delete;
    ConnectTracer& operator=(const ConnectTracer&) = delete;

    bool works() const { return !rings.empty(); }

    // Takes in what happened since the last call.
    void update();

    // Who opened the connection from `local` to `remote`, without its start time (0), and with a
    // name only if the process began its program lately. Each answer is given once.
    std::optional<Holder> openerOf(const Endpoint& local, const Endpoint& remote);

  private:
    struct Opener {
        Holder holder;
        std::uint64_t round = 0;  // update in which it was noted
    };
    struct Event {
        std::uint64_t time = 0;
        int pid = 0;
        StateChange change;
    };
    // The ring buffer of one processor.
    struct Ring {
        Descriptor event;
        void* memory = nullptr;
    };

    void openRings(std::uint64_t event);
    void readRing(const Ring& ring);
    void takeRecord(std::span<const std::byte> record);
    void takeEvent(const Event& event);
    void forgetOld();

    TraceLayout layout;
    std::vector<Ring> rings;
    std::vector<Event> events;
    std::unordered_map<std::uint64_t, Opener> connecting;  // by the kernel's address of the socket
    std::map<std::pair<Endpoint, Endpoint>, Opener> connected;
    std::unordered_map<int, Opener> names;  // of processes that began a program lately
    std::uint64_t round = 0;
};

}  // namespace vostel::nettop
