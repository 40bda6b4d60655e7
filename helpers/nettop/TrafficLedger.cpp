#include "TrafficLedger.h"

#include <algorithm>

namespace vostel::nettop {

namespace {

// A dump is taken in pieces and may miss a socket once; without a notice of its end one is given
// up only then. With notices the long wait catches a cut connection that its process still holds.
constexpr int missingWithoutNotice = 3;
constexpr int missingWithNotice = 600;
// Bytes of a socket without a known holder are kept for so many readings, for the case that it is
// found. After that a late find would look like a burst.
constexpr int ownerlessReadings = 40;

std::uint64_t portKey(NamespaceId space, std::uint16_t port) {
    return static_cast<std::uint64_t>(space) << 16U | port;
}

}  // namespace

void TrafficLedger::grow(Socket& socket, const SocketReading& reading) {
    // Lower counters: the same socket was disconnected and connected anew.
    const bool anew =
        reading.bytesIn < socket.last.bytesIn || reading.bytesOut < socket.last.bytesOut;
    socket.pendingIn += reading.bytesIn - (anew ? 0 : socket.last.bytesIn);
    socket.pendingOut += reading.bytesOut - (anew ? 0 : socket.last.bytesOut);
}

void TrafficLedger::settle(Socket& socket) {
    if (Process* owner = ownerOf(socket)) {
        owner->bytesIn += socket.pendingIn;
        owner->bytesOut += socket.pendingOut;
        socket.pendingIn = 0;
        socket.pendingOut = 0;
    }
}

TrafficLedger::Process* TrafficLedger::ownerOf(const Socket& socket) {
    const auto found = processes.find(socket.owner);
    return found == processes.end() ? nullptr : &found->second;
}

void TrafficLedger::observe(NamespaceId space, const SocketReading& seen) {
    const Key key{space, seen.cookie};
    auto found = sockets.find(key);
    if (found == sockets.end()) {
        if (sockets.size() >= maximumSockets) {
            return;
        }
        found = sockets.emplace(key, Socket{}).first;
        found->second.fromTheStart = reading == 0;
    }
    Socket& socket = found->second;
    if (seen.listening) {
        listeners[portKey(space, seen.local.port)] = key;
    } else {
        grow(socket, seen);
    }
    if (seen.inode != socket.last.inode) {
        const auto listed = byInode.find(socket.last.inode);
        if (listed != byInode.end() && listed->second == key) {
            byInode.erase(listed);
        }
        if (seen.inode != 0) {
            byInode[seen.inode] = key;
            socket.searches = 0;  // accepted just now
            socket.nextSearch = reading;
        }
    }
    socket.last = seen;
    socket.seenAt = reading + 1;
    socket.missing = 0;
}

void TrafficLedger::observeClosed(NamespaceId space, const SocketReading& seen,
                                  const std::optional<Holder>& opener) {
    const Key key{space, seen.cookie};
    const auto found = sockets.find(key);
    Socket unseen;
    Socket& socket = found == sockets.end() ? unseen : found->second;
    grow(socket, seen);
    if (ownerOf(socket) == nullptr) {
        socket.owner = listenerOwner(space, seen.local);
        if (socket.owner == 0 && opener && socket.pendingIn + socket.pendingOut > 0) {
            socket.owner = processSerial(*opener);
        }
        settle(socket);
        if (found != sockets.end()) {
            socket.owner = 0;  // never counted among the process's sockets
        }
    }
    settle(socket);
    if (found != sockets.end()) {
        eraseSocket(key);
    }
}

std::uint64_t TrafficLedger::listenerOwner(NamespaceId space, const Endpoint& local) {
    const auto listener = listeners.find(portKey(space, local.port));
    if (listener == listeners.end()) {
        return 0;
    }
    const auto socket = sockets.find(listener->second);
    if (socket == sockets.end()) {
        listeners.erase(listener);
        return 0;
    }
    const Endpoint& bound = socket->second.last.local;
    const bool fits = isUnspecified(bound.address) || bound.address == local.address;
    return fits && ownerOf(socket->second) != nullptr ? socket->second.owner : 0;
}

void TrafficLedger::disown(Socket& socket) {
    if (Process* owner = ownerOf(socket)) {
        --owner->sockets;
    }
    socket.owner = 0;
    socket.descriptor = -1;
    socket.searches = 0;
    socket.nextSearch = reading;
    socket.ownerless = 0;
}

void TrafficLedger::eraseSocket(const Key& key) {
    const auto found = sockets.find(key);
    const auto listed = byInode.find(found->second.last.inode);
    if (listed != byInode.end() && listed->second == key) {
        byInode.erase(listed);
    }
    disown(found->second);
    sockets.erase(found);
}

void TrafficLedger::finishNamespace(NamespaceId space, bool noticesClosing) {
    const int patience = noticesClosing ? missingWithNotice : missingWithoutNotice;
    std::vector<Key> lost;
    for (auto& [key, socket] : sockets) {
        if (key.space != space || socket.seenAt == reading + 1) {
            continue;
        }
        const Process* owner = ownerOf(socket);
        const bool ended = owner == nullptr || owner->goneFor >= 0;
        if (++socket.missing >= (ended ? missingWithoutNotice : patience)) {
            lost.push_back(key);
        }
    }
    for (const Key& key : lost) {
        eraseSocket(key);
    }
}

void TrafficLedger::forgetNamespace(NamespaceId space) {
    std::vector<Key> lost;
    for (auto& [key, socket] : sockets) {
        if (key.space == space) {
            settle(socket);
            lost.push_back(key);
        }
    }
    for (const Key& key : lost) {
        eraseSocket(key);
    }
}

std::unordered_map<std::uint32_t, std::uint32_t> TrafficLedger::wanted() const {
    std::unordered_map<std::uint32_t, std::uint32_t> result;
    for (const auto& [inode, key] : byInode) {
        const Socket& socket = sockets.at(key);
        if (socket.owner == 0 && socket.seenAt == reading + 1 && socket.nextSearch <= reading) {
            result.emplace(inode, socket.last.uid);
        }
    }
    return result;
}

void TrafficLedger::hold(std::uint32_t inode, const Holder& holder) {
    const auto key = byInode.find(inode);
    if (key == byInode.end()) {
        return;
    }
    Socket& socket = sockets.at(key->second);
    disown(socket);
    socket.owner = processSerial(holder);
    socket.descriptor = holder.descriptor;
    socket.fromTheStart = false;
    ++processes.at(socket.owner).sockets;
}

void TrafficLedger::searched() {
    for (const auto& [inode, key] : byInode) {
        Socket& socket = sockets.at(key);
        if (socket.owner == 0 && socket.nextSearch <= reading) {
            socket.nextSearch = reading + (1ULL << static_cast<unsigned>(socket.searches));
            socket.searches = std::min(socket.searches + 1, 6);
        }
    }
}

std::vector<HeldSocket> TrafficLedger::held(std::size_t part, std::size_t parts) const {
    std::vector<HeldSocket> result;
    for (const auto& [inode, key] : byInode) {
        const Socket& socket = sockets.at(key);
        if (inode % parts == part && socket.owner != 0) {
            result.push_back({inode, processes.at(socket.owner).holder.pid, socket.descriptor});
        }
    }
    return result;
}

std::unordered_map<int, std::unordered_set<int>> TrafficLedger::knownDescriptors() const {
    std::unordered_map<int, std::unordered_set<int>> result;
    for (const auto& [inode, key] : byInode) {
        const Socket& socket = sockets.at(key);
        if (socket.owner != 0 && socket.seenAt == reading + 1) {
            result[processes.at(socket.owner).holder.pid].insert(socket.descriptor);
        }
    }
    return result;
}

void TrafficLedger::release(std::uint32_t inode) {
    const auto key = byInode.find(inode);
    if (key != byInode.end()) {
        settle(sockets.at(key->second));
        disown(sockets.at(key->second));
    }
}

std::uint64_t TrafficLedger::processSerial(const Holder& holder) {
    const auto known = byPid.find(holder.pid);
    if (known != byPid.end()) {
        Process& process = processes.at(known->second);
        if (holder.startTime == 0) {
            return known->second;
        }
        if (process.holder.startTime == holder.startTime) {
            process.holder.name = holder.name;  // exec changes it
            return known->second;
        }
        // The pid was given out anew. Sockets of the old process find no owner from now on.
        processes.erase(known->second);
        byPid.erase(known);
    }
    if (processes.size() >= maximumProcesses) {
        makeRoomForProcess();
    }
    processes[++lastSerial].holder = holder;
    byPid[holder.pid] = lastSerial;
    return lastSerial;
}

void TrafficLedger::makeRoomForProcess() {
    // First what has ended, then what has no sockets, then what was found first.
    const auto rank = [](const auto& entry) {
        const Process& process = entry.second;
        const int kind = process.goneFor >= 0 ? 0 : process.sockets == 0 ? 1 : 2;
        return std::pair(kind, entry.first);
    };
    const auto least =
        std::min_element(processes.begin(), processes.end(),
                         [&](const auto& a, const auto& b) { return rank(a) < rank(b); });
    byPid.erase(least->second.holder.pid);
    processes.erase(least);
}

std::vector<Holder> TrafficLedger::owners() const {
    std::vector<Holder> result;
    for (const auto& [serial, process] : processes) {
        if (process.goneFor < 0) {
            result.push_back(process.holder);
        }
    }
    return result;
}

void TrafficLedger::processGone(int pid) {
    const auto known = byPid.find(pid);
    if (known != byPid.end() && processes.at(known->second).goneFor < 0) {
        processes.at(known->second).goneFor = 0;
    }
}

void TrafficLedger::finishReading() {
    for (auto& [key, socket] : sockets) {
        Process* owner = ownerOf(socket);
        if (socket.owner != 0 && owner == nullptr) {
            socket.owner = 0;
            disown(socket);
        }
        settle(socket);
        // A socket that outlives its process and still has an inode has another holder.
        if (owner != nullptr && owner->goneFor >= 0 && socket.last.inode != 0 &&
            socket.missing == 0) {
            disown(socket);
        }
        if (socket.owner == 0 && (socket.fromTheStart || ++socket.ownerless > ownerlessReadings)) {
            socket.pendingIn = 0;
            socket.pendingOut = 0;
        }
    }
    ++reading;
}

std::vector<TrafficRow> TrafficLedger::rows() {
    std::vector<TrafficRow> result;
    for (auto entry = processes.begin(); entry != processes.end();) {
        Process& process = entry->second;
        if (process.goneFor >= lingeringBlocks) {
            byPid.erase(process.holder.pid);
            entry = processes.erase(entry);
            continue;
        }
        const bool zeros = process.goneFor >= 0 && !process.shown;
        result.push_back({process.holder.pid, printableName(process.holder.name),
                          zeros ? 0 : process.bytesIn, zeros ? 0 : process.bytesOut});
        process.shown = true;
        process.goneFor += process.goneFor >= 0 ? 1 : 0;
        ++entry;
    }
    std::sort(result.begin(), result.end(),
              [](const TrafficRow& a, const TrafficRow& b) { return a.pid < b.pid; });
    return result;
}

}  // namespace vostel::nettop
