#include "monitors/network/InterfaceInfo.h"

#include <cctype>
#include <string_view>
#include <unordered_map>

namespace vostel::InterfaceInfo {

namespace {

bool isLinkLocal(std::string_view text) {
    constexpr std::string_view prefix = "fe80";
    if (text.size() < prefix.size()) {
        return false;
    }
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(text[i])) != prefix[i]) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::map<std::string, InterfaceAddresses> addresses(std::span<const InterfaceCounters> interfaces,
                                                    std::span<const InterfaceAddress> found) {
    std::unordered_map<int, const std::string*> names;
    for (const InterfaceCounters& interface : interfaces) {
        names.emplace(interface.index, &interface.name);
    }
    std::map<std::string, InterfaceAddresses> result;
    for (const InterfaceAddress& address : found) {
        const auto name = names.find(address.index);
        if (name == names.end()) {
            continue;
        }
        const std::string text = address.text.substr(0, address.text.find('%'));
        InterfaceAddresses& entry = result[*name->second];
        if (!address.ipv6) {
            entry.ipv4 = text;
            continue;
        }
        auto& slot = isLinkLocal(text) ? entry.ipv6LinkLocal : entry.ipv6Global;
        if (!slot) {
            slot = text;
        }
    }
    return result;
}

}  // namespace vostel::InterfaceInfo
