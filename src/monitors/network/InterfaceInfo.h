#pragma once

#include <map>
#include <span>
#include <string>

#include "monitors/network/InterfaceAddresses.h"
#include "platform/NetworkSource.h"

namespace vostel::InterfaceInfo {

// The addresses of each of `interfaces` that has any, by interface name. Of several IPv4 addresses
// the last counts, of several global or link-local IPv6 addresses the first. Addresses of other
// interfaces (loopback is not among `interfaces`) are skipped.
std::map<std::string, InterfaceAddresses> addresses(std::span<const InterfaceCounters> interfaces,
                                                    std::span<const InterfaceAddress> found);

}  // namespace vostel::InterfaceInfo
