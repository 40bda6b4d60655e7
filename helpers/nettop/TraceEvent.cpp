#include "TraceEvent.h"

#include <sys/socket.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>

namespace vostel::nettop {

namespace {

// "field:TYPE NAME; offset:N; size:M; ..."
bool fieldOffset(std::string_view text, std::string_view name, std::size_t& offset) {
    const std::size_t field = text.find(" " + std::string(name) + ";");
    constexpr std::string_view mark = "offset:";
    const std::size_t found = field == std::string_view::npos ? field : text.find(mark, field);
    if (found == std::string_view::npos) {
        return false;
    }
    const char* start = text.data() + found + mark.size();
    const auto [end, error] = std::from_chars(start, text.data() + text.size(), offset);
    return error == std::errc{} && offset < 4096;
}

template <typename Value>
Value valueAt(std::span<const std::byte> record, std::size_t offset) {
    Value value{};
    std::memcpy(&value, record.data() + offset, sizeof value);
    return value;
}

}  // namespace

std::optional<TraceLayout> parseTraceFormat(std::string_view text) {
    TraceLayout layout;
    const bool whole = fieldOffset(text, "skaddr", layout.socket) &&
                       fieldOffset(text, "oldstate", layout.oldState) &&
                       fieldOffset(text, "newstate", layout.newState) &&
                       fieldOffset(text, "sport", layout.localPort) &&
                       fieldOffset(text, "dport", layout.remotePort) &&
                       fieldOffset(text, "family", layout.family) &&
                       fieldOffset(text, "saddr[4]", layout.local4) &&
                       fieldOffset(text, "daddr[4]", layout.remote4) &&
                       fieldOffset(text, "saddr_v6[16]", layout.local6) &&
                       fieldOffset(text, "daddr_v6[16]", layout.remote6);
    return whole ? std::optional(layout) : std::nullopt;
}

std::optional<StateChange> readStateChange(const TraceLayout& layout,
                                           std::span<const std::byte> record) {
    const std::size_t needed =
        std::max({layout.socket + 8, layout.oldState + 4, layout.newState + 4, layout.localPort + 2,
                  layout.remotePort + 2, layout.family + 2, layout.local4 + 4, layout.remote4 + 4,
                  layout.local6 + 16, layout.remote6 + 16});
    if (record.size() < needed) {
        return std::nullopt;
    }
    StateChange change;
    change.socket = valueAt<std::uint64_t>(record, layout.socket);
    change.oldState = valueAt<int>(record, layout.oldState);
    change.newState = valueAt<int>(record, layout.newState);
    change.local.port = valueAt<std::uint16_t>(record, layout.localPort);
    change.remote.port = valueAt<std::uint16_t>(record, layout.remotePort);
    const auto family = valueAt<std::uint16_t>(record, layout.family);
    if (family == AF_INET) {
        struct Four {
            std::uint8_t bytes[4];
        };
        change.local.address = mappedAddress(valueAt<Four>(record, layout.local4).bytes);
        change.remote.address = mappedAddress(valueAt<Four>(record, layout.remote4).bytes);
    } else if (family == AF_INET6) {
        change.local.address = valueAt<Address>(record, layout.local6);
        change.remote.address = valueAt<Address>(record, layout.remote6);
    } else {
        return std::nullopt;
    }
    return change;
}

}  // namespace vostel::nettop
