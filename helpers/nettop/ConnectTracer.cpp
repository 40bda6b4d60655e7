#include "ConnectTracer.h"

#include <fcntl.h>
#include <linux/perf_event.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/syscall.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>

namespace vostel::nettop {

namespace {

constexpr int tcpEstablished = 1;  // net/tcp_states.h
constexpr int tcpSynSent = 2;
constexpr const char* firstSteps = "newstate==2 || oldstate==2";
constexpr std::size_t ringPages = 8;           // some 250 connections a processor between readings
constexpr std::uint64_t rememberedRounds = 8;  // a connection that lived longer was seen in a dump
constexpr std::uint64_t connectingRounds = 2000;  // a connection may take two minutes to succeed
constexpr std::uint64_t nameRounds = 600;
constexpr std::size_t maximumEntries = 16384;
constexpr std::size_t maximumRecord = 1024;

// The tracing file system: where it is mounted, else mounted for this process alone, in no
// namespace and gone with the descriptor (fsmount(2)).
Descriptor openTraceFolder() {
    for (const char* path : {"/sys/kernel/tracing", "/sys/kernel/debug/tracing"}) {
        Descriptor folder(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        // Where it is not mounted there is an empty folder. access(2) would ask for the real user.
        if (folder && faccessat(folder.get(), "events", F_OK, AT_EACCESS) == 0) {
            return folder;
        }
    }
    const Descriptor context(fsopen("tracefs", FSOPEN_CLOEXEC));
    if (!context || fsconfig(context.get(), FSCONFIG_CMD_CREATE, nullptr, nullptr, 0) != 0) {
        return Descriptor();
    }
    return Descriptor(fsmount(context.get(), FSMOUNT_CLOEXEC, 0));
}

std::string readFile(int folder, const char* path) {
    const Descriptor file(openat(folder, path, O_RDONLY | O_CLOEXEC));
    std::string text(16384, '\0');
    const ssize_t size = file ? read(file.get(), text.data(), text.size()) : 0;
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return text;
}

std::size_t pageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

template <typename Value>
Value valueAt(std::span<const std::byte> bytes, std::size_t offset) {
    Value value{};
    if (bytes.size() >= offset + sizeof value) {
        std::memcpy(&value, bytes.data() + offset, sizeof value);
    }
    return value;
}

template <typename Map>
void forget(Map& entries, std::uint64_t before) {
    std::erase_if(entries, [&](const auto& entry) { return entry.second.round < before; });
    if (entries.size() > maximumEntries) {
        entries.clear();
    }
}

}  // namespace

ConnectTracer::ConnectTracer() {
    const Descriptor folder = openTraceFolder();
    if (!folder) {
        return;
    }
    const auto parsed =
        parseTraceFormat(readFile(folder.get(), "events/sock/inet_sock_set_state/format"));
    const std::string id = readFile(folder.get(), "events/sock/inet_sock_set_state/id");
    std::uint64_t event = 0;
    std::from_chars(id.data(), id.data() + id.size(), event);
    if (parsed && event != 0) {
        layout = *parsed;
        openRings(event);
    }
}

ConnectTracer::~ConnectTracer() {
    for (const Ring& ring : rings) {
        munmap(ring.memory, (ringPages + 1) * pageSize());
    }
}

void ConnectTracer::openRings(std::uint64_t event) {
    perf_event_attr attributes{};
    attributes.size = sizeof attributes;
    attributes.type = PERF_TYPE_TRACEPOINT;
    attributes.config = event;
    attributes.sample_period = 1;
    attributes.sample_type = PERF_SAMPLE_TID | PERF_SAMPLE_TIME | PERF_SAMPLE_RAW;
    attributes.comm = 1;
    attributes.watermark = 1;  // no wake-up before the ring is full
    attributes.wakeup_watermark = static_cast<std::uint32_t>(ringPages * pageSize());
    const long processors = sysconf(_SC_NPROCESSORS_CONF);
    for (int processor = 0; processor < processors; ++processor) {
        Descriptor opened(static_cast<int>(
            syscall(SYS_perf_event_open, &attributes, -1, processor, -1, PERF_FLAG_FD_CLOEXEC)));
        if (!opened || ioctl(opened.get(), PERF_EVENT_IOC_SET_FILTER, firstSteps) != 0) {
            continue;  // not permitted, or a processor that is switched off
        }
        void* memory = mmap(nullptr, (ringPages + 1) * pageSize(), PROT_READ | PROT_WRITE,
                            MAP_SHARED, opened.get(), 0);
        if (memory != MAP_FAILED) {
            rings.push_back({std::move(opened), memory});
        }
    }
}

void ConnectTracer::readRing(const Ring& ring) {
    auto* control = static_cast<perf_event_mmap_page*>(ring.memory);
    const auto* data = static_cast<const std::byte*>(ring.memory) + pageSize();
    const std::size_t size = ringPages * pageSize();
    // The kernel writes the head and reads the tail (linux/perf_event.h).
    const std::uint64_t head = std::atomic_ref(control->data_head).load(std::memory_order_acquire);
    std::uint64_t tail = control->data_tail;
    std::byte record[maximumRecord];
    while (tail < head) {
        perf_event_header header;
        const auto copy = [&](void* target, std::size_t count) {
            const std::size_t start = tail % size;
            const std::size_t first = std::min(count, size - start);
            std::memcpy(target, data + start, first);
            std::memcpy(static_cast<std::byte*>(target) + first, data, count - first);
        };
        copy(&header, sizeof header);
        if (header.size < sizeof header) {
            break;
        }
        if (header.size <= sizeof record) {
            copy(record, header.size);
            takeRecord({record, header.size});
        }
        tail += header.size;
    }
    std::atomic_ref(control->data_tail).store(head, std::memory_order_release);
}

void ConnectTracer::takeRecord(std::span<const std::byte> record) {
    const auto type = valueAt<perf_event_header>(record, 0).type;
    const auto body = record.subspan(sizeof(perf_event_header));
    if (type == PERF_RECORD_COMM && body.size() > 8) {  // pid, tid, name
        const auto pid = valueAt<int>(body, 0);
        if (pid == valueAt<int>(body, 4)) {  // the first thread's name is the process's
            const auto* name = reinterpret_cast<const char*>(body.data() + 8);
            names[pid] = {Holder{pid, 0, -1, std::string(name, strnlen(name, body.size() - 8))},
                          round};
        }
    } else if (type == PERF_RECORD_SAMPLE && body.size() >= 20) {  // pid, tid, time, size, raw
        const auto size = std::min<std::size_t>(valueAt<std::uint32_t>(body, 16), body.size() - 20);
        if (const auto change = readStateChange(layout, body.subspan(20, size))) {
            events.push_back({valueAt<std::uint64_t>(body, 8), valueAt<int>(body, 0), *change});
        }
    }
}

void ConnectTracer::takeEvent(const Event& event) {
    const StateChange& change = event.change;
    if (change.newState == tcpSynSent) {  // in the process that connects; the port comes later
        connecting[change.socket] = {Holder{event.pid, 0, -1, ""}, round};
        return;
    }
    const auto found = connecting.find(change.socket);
    if (found == connecting.end()) {
        return;
    }
    if (change.newState == tcpEstablished) {  // in whatever process the answer interrupted
        connected[{change.local, change.remote}] = {found->second.holder, round};
    }
    connecting.erase(found);
}

void ConnectTracer::update() {
    ++round;
    events.clear();
    for (const Ring& ring : rings) {
        readRing(ring);
    }
    // The two steps of a connection may stand in the rings of different processors.
    std::sort(events.begin(), events.end(),
              [](const Event& a, const Event& b) { return a.time < b.time; });
    for (const Event& event : events) {
        takeEvent(event);
    }
    forgetOld();
}

void ConnectTracer::forgetOld() {
    forget(connected, round - std::min(round, rememberedRounds));
    forget(names, round - std::min(round, nameRounds));
    forget(connecting, round - std::min(round, connectingRounds));
}

std::optional<Holder> ConnectTracer::openerOf(const Endpoint& local, const Endpoint& remote) {
    const auto found = connected.find({local, remote});
    if (found == connected.end()) {
        return std::nullopt;
    }
    Holder holder = found->second.holder;
    connected.erase(found);
    const auto name = names.find(holder.pid);
    if (name != names.end()) {
        holder.name = name->second.holder.name;
    }
    return holder;
}

}  // namespace vostel::nettop
