#include <cstdio>

#include "TrafficLedger.h"

namespace vostel::nettop {

namespace {

// The length of the UTF-8 character at the start of `text` (RFC 3629), 0 where there is none.
std::size_t characterLength(std::string_view text) {
    const auto at = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = at(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xc2 ? 0
                               : lead < 0xe0 ? 2
                               : lead < 0xf0 ? 3
                               : lead < 0xf5 ? 4
                                             : 0;
    if (length == 0 || length > text.size()) {
        return 0;
    }
    for (std::size_t index = 1; index < length; ++index) {
        if ((at(index) & 0xc0U) != 0x80) {
            return 0;
        }
    }
    const bool overlong = (lead == 0xe0 && at(1) < 0xa0) || (lead == 0xf0 && at(1) < 0x90);
    const bool beyond = (lead == 0xed && at(1) >= 0xa0) || (lead == 0xf4 && at(1) >= 0x90);
    const bool control = lead < 0x20 || lead == 0x7f || (lead == 0xc2 && at(1) < 0xa0);
    return overlong || beyond || control ? 0 : length;
}

}  // namespace

std::string printableName(std::string_view name) {
    std::string result;
    while (!name.empty()) {
        const std::size_t length = name[0] == ',' ? 0 : characterLength(name);
        result += length == 0 ? "?" : name.substr(0, length);
        name.remove_prefix(length == 0 ? 1 : length);
    }
    return result.empty() ? "?" : result;
}

std::string formatBlock(double secondsOfDay, std::string_view sight,
                        const std::vector<TrafficRow>& rows) {
    constexpr long long day = 86'400'000'000;
    const long long now = static_cast<long long>(secondsOfDay * 1e6) % day;
    char clock[32];
    std::snprintf(clock, sizeof clock, "%02lld:%02lld:%02lld.%06lld", now / 3'600'000'000,
                  now / 60'000'000 % 60, now / 1'000'000 % 60, now % 1'000'000);
    std::string text = std::string("time,") + clock + ",bytes_in,bytes_out\n# ";
    text.append(sight).append("\n");
    for (const TrafficRow& row : rows) {
        text += row.name + "." + std::to_string(row.pid) + "," + std::to_string(row.bytesIn) + "," +
                std::to_string(row.bytesOut) + "\n";
    }
    return text + "# end\n";
}

}  // namespace vostel::nettop
