// Datagrams of the kernel's socket diagnostics, of its addresses, and the texts of /proc and
// tracefs that the traffic helper reads.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "DiagMessage.h"
#include "ProcessTable.h"
#include "TraceEvent.h"
#include "TrafficLedger.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vostel::nettop;
    const auto bytes = std::as_bytes(std::span(data, size));
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    TrafficLedger ledger;
    for (int reading = 0; reading < 2; ++reading) {
        readDiagDatagram(bytes, [&](const SocketReading& socket) {
            if ((socket.uid & 1U) != 0) {
                ledger.observeClosed(1, socket, Holder{1, 1, -1, "p"});
            } else {
                ledger.observe(1, socket);
            }
        });
        ledger.finishNamespace(1, true);
        for (const auto& [inode, uid] : ledger.wanted()) {
            ledger.hold(inode, Holder{1, 1, 3, "p"});
        }
        ledger.finishReading();
    }
    ledger.rows();
    std::vector<Address> addresses;
    readAddressDatagram(bytes, addresses);
    if (const auto layout = parseTraceFormat(text)) {
        readStateChange(*layout, bytes);
    }
    parseProcessStat(text);
    parseSocketLink(text);
    const std::string name = printableName(text);
    if (name.empty() || name.find('\n') != std::string::npos) {
        std::abort();
    }
    return 0;
}
