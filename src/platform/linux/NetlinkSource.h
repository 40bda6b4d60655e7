#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/NetworkSource.h"
#include "platform/linux/NetlinkMessages.h"

namespace vostel {

// The interfaces of the network namespace that the first reading is made in, over one kept
// NETLINK_ROUTE socket. A reading never waits: the kernel has its answer ready when it is asked.
// Addresses are read again only after the kernel announced, on a second socket, that some changed.
class NetlinkSource : public NetworkSource {
  public:
    NetlinkSource() = default;
    ~NetlinkSource() override;
    NetlinkSource(const NetlinkSource&) = delete;
    NetlinkSource& operator=(const NetlinkSource&) = delete;

    std::vector<InterfaceCounters> interfaces() override;
    std::vector<InterfaceAddress> addresses() override;

  private:
    enum class Dump { complete, interrupted, failed };

    template <typename Entry>
    std::vector<Entry> read(int type, NetlinkAnswer (*parse)(std::span<const std::byte>,
                                                             std::uint32_t, std::vector<Entry>&));
    template <typename Entry>
    Dump dump(int type, std::vector<Entry>& entries,
              NetlinkAnswer (*parse)(std::span<const std::byte>, std::uint32_t,
                                     std::vector<Entry>&));
    bool addressesMayHaveChanged();
    bool open();
    bool ask(int type);
    void close();
    void closeNews();

    int descriptor = -1;
    int news = -1;       // announcements of changed addresses
    bool known = false;  // `lastAddresses` was true when the last announcement was read
    std::vector<InterfaceAddress> lastAddresses;
    std::uint32_t sequence = 0;
    int failure = 0;  // errno of the last dump; 0: it succeeded
    std::vector<std::byte> buffer;
};

}  // namespace vostel
