#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "SocketReading.h"

namespace vostel::nettop {

// Where the fields of the tracepoint sock:inet_sock_set_state lie in its records, in bytes.
struct TraceLayout {
    std::size_t socket = 0;  // the kernel's address of the socket, 8 bytes
    std::size_t oldState = 0;
    std::size_t newState = 0;
    std::size_t localPort = 0;  // host byte order
    std::size_t remotePort = 0;
    std::size_t family = 0;
    std::size_t local4 = 0;
    std::size_t remote4 = 0;
    std::size_t local6 = 0;
    std::size_t remote6 = 0;
};

// Reads the tracepoint's "format" file (the kernel's Documentation/trace/events.rst); nothing when
// a field is missing. The offsets differ between kernels.
std::optional<TraceLayout> parseTraceFormat(std::string_view text);

struct StateChange {
    std::uint64_t socket = 0;
    int oldState = 0;
    int newState = 0;
    Endpoint local;
    Endpoint remote;
};

// One raw record; nothing when it is too short or of another address family.
std::optional<StateChange> readStateChange(const TraceLayout& layout,
                                           std::span<const std::byte> record);

}  // namespace vostel::nettop
