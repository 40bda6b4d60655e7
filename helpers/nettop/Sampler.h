#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "ConnectTracer.h"
#include "ProcessTable.h"
#include "SocketDiag.h"
#include "TrafficLedger.h"

namespace vostel::nettop {

// Takes readings: the sockets of every network namespace within reach, joined to processes.
//
// Left out are connections that stay on this machine: those whose peer has a loopback address or
// one of the namespace's own addresses. They are no network traffic, and both their ends would
// count. Two namespaces of one machine are two machines in this.
class Sampler {
  public:
    explicit Sampler(const std::string& procRoot);

    // False when socket diagnostics are not to be had on this system at all.
    bool works() const { return !spaces.empty(); }

    // Takes one reading. `now` in seconds on a clock that never runs backwards.
    void read(double now);

    // The rows of a block.
    std::vector<TrafficRow> rows();

    // How far the rows reach, as words "key=value":
    // sight=all|own          processes of all users, or of this user only
    // closed=all|some|none   bytes of a connection between the last reading and its end: counted;
    //                        counted unless it came and went between two readings; not counted
    // namespaces=all|own     containers' networks are read too, or not
    std::string sight() const;

  private:
    struct Space {
        NamespaceId id = 0;
        SocketDiag diag;
    };
    struct Closed {
        NamespaceId space = 0;
        SocketReading reading;
    };
    void openNamespaces(double now);
    void readNamespace(Space& space, double now);
    void findHolders(double now);
    void checkHolders();
    void settleClosed();

    TrafficLedger ledger;
    ProcessTable processes;
    ConnectTracer tracer;
    std::string procRoot;
    std::map<ino_t, Space> spaces;
    std::set<ino_t> refused;
    std::vector<Closed> closed;
    std::vector<NamespaceId> ended;  // read for the last time
    Descriptor home;                 // the namespace that the helper itself lives in
    ino_t homeInode = 0;
    ino_t lastVisited = 0;
    NamespaceId lastId = 0;
    bool seesAll = false;
    bool entersOthers = false;
    double nextSearch = 0;
    std::uint64_t readings = 0;
};

}  // namespace vostel::nettop
