#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>

#include <cmath>
#include <cstring>

#include "DiagMessage.h"
#include "Options.h"
#include "ProcessTable.h"
#include "ReadingBudget.h"
#include "TraceEvent.h"
#include "TrafficLedger.h"

namespace vostel::nettop {
namespace {

TEST(OptionsTest, TakesWhatTheReaderPassesAndNothingElse) {
    const struct {
        std::vector<const char*> words;
        const char* error;
        int interval;
        long long blocks;
    } rows[] = {
        {{"-P", "-x", "-J", "bytes_in,bytes_out", "-l", "0", "-s", "2"}, "", 2, 0},
        {{"-l", "5"}, "", 1, 5},
        {{"-s", "0"}, "-s takes seconds from 1 to 3600, not '0'", 1, 0},
        {{"-s", "1.5"}, "-s takes seconds from 1 to 3600, not '1.5'", 1, 0},
        {{"-l", "-1"}, "-l takes a count, 0 for no end, not '-1'", 1, 0},
        {{"-s"}, "-s needs a value", 1, 0},
        {{"-J", "rtt"}, "-J takes bytes_in,bytes_out, not 'rtt'", 1, 0},
        {{"-n"}, "unknown option '-n'", 1, 0},
        {{""}, "unknown option ''", 1, 0},
    };
    for (const auto& row : rows) {
        std::vector<char*> words;
        for (const char* word : row.words)
            words.push_back(const_cast<char*>(word));
        const ParsedOptions parsed = parseOptions(words);
        EXPECT_EQ(parsed.error, row.error);
        EXPECT_EQ(parsed.options.interval, row.interval) << row.error;
        EXPECT_EQ(parsed.options.blocks, row.blocks) << row.error;
    }
}

TEST(ProcessTableTest, StatLines) {
    const std::string rest = " S 1 1 1 0 -1 4194560 9 0 0 0 1 2 0 0 20 0 1 0 4711 1 1\n";
    const auto odd = parseProcessStat("42 (a) (b S 1) x)" + rest);
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->name, "a) (b S 1) x");
    EXPECT_EQ(odd->startTime, 4711u);
    for (const char* text :
         {"", "42", "42 (x", "42 )x(", "42 (x) S 1 2 3", "1 (x) S 1 1 1 0 -1 4"}) {
        EXPECT_FALSE(parseProcessStat(text)) << text;
    }
    EXPECT_EQ(parseSocketLink("socket:[4294967295]"), 4294967295u);
    for (const char* text : {"socket:[4294967296]", "socket:[", "socket:[]", "pipe:[3]", ""}) {
        EXPECT_EQ(parseSocketLink(text), 0u) << text;
    }
}

TEST(BlockTextTest, NamesCannotBreakTheLines) {
    EXPECT_EQ(printableName("a,b\nc\x7f"), "a?b?c?");
    EXPECT_EQ(printableName("gr\xc3\xbc\xc3\x9f"), "gr\xc3\xbc\xc3\x9f");
    EXPECT_EQ(printableName("\xff\xc3|\xe0\x80\x80|\xed\xa0\x80|\xc2\x85"), "??|???|???|??");
    EXPECT_EQ(printableName(""), "?");
    EXPECT_EQ(formatBlock(86399.9999995 + 1, "sight=own", {{7, "x", 1, 2}}),
              "time,00:00:00.999999,bytes_in,bytes_out\n# sight=own\nx.7,1,2\n# end\n");
}

// The bytes of one message of the kernel about a socket.
template <typename Record>
std::string bytesOf(const Record& record, std::size_t size = sizeof(Record)) {
    return {reinterpret_cast<const char*>(&record), size};
}

std::string message(std::uint64_t cookie, std::size_t infoSize) {
    inet_diag_msg body{};
    body.idiag_family = AF_INET;
    body.id.idiag_sport = htons(80);
    body.id.idiag_src[0] = htonl(0x7f000001);
    body.id.idiag_cookie[0] = static_cast<std::uint32_t>(cookie);
    body.id.idiag_cookie[1] = static_cast<std::uint32_t>(cookie >> 32U);
    body.idiag_inode = 99;
    tcp_info info{};
    info.tcpi_bytes_received = 1000;
    info.tcpi_bytes_acked = 2000;
    info.tcpi_bytes_sent = 3000;
    const nlattr attribute{static_cast<std::uint16_t>(sizeof(nlattr) + infoSize), INET_DIAG_INFO};
    std::string rest = bytesOf(body) + bytesOf(attribute) + bytesOf(info, infoSize);
    nlmsghdr header{};
    header.nlmsg_len = static_cast<std::uint32_t>(sizeof header + rest.size());
    header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    rest.resize(NLMSG_ALIGN(rest.size()));
    return bytesOf(header) + rest;
}

std::vector<SocketReading> readAll(const std::string& bytes, DiagStatus* status = nullptr) {
    std::vector<SocketReading> result;
    const auto end = readDiagDatagram(std::as_bytes(std::span(bytes)),
                                      [&](const auto& reading) { result.push_back(reading); });
    if (status != nullptr) *status = end;
    return result;
}

TEST(DiagMessageTest, CountersOfKernelsOldAndNew) {
    const struct {
        std::size_t infoSize;
        std::uint64_t in;
        std::uint64_t out;
    } rows[] = {{sizeof(tcp_info), 1000, 3000},
                {offsetof(tcp_info, tcpi_bytes_sent), 1000, 2000},  // before 4.19
                {offsetof(tcp_info, tcpi_bytes_acked), 0, 0}};      // before 4.1
    for (const auto& row : rows) {
        const auto readings = readAll(message(0x500000001, row.infoSize));
        ASSERT_EQ(readings.size(), 1u);
        EXPECT_EQ(readings[0].cookie, 0x500000001u);
        EXPECT_EQ(readings[0].bytesIn, row.in);
        EXPECT_EQ(readings[0].bytesOut, row.out);
        EXPECT_TRUE(isLoopback(readings[0].local.address));
        EXPECT_EQ(readings[0].local.port, 80);
    }
}

TEST(DiagMessageTest, BrokenMessages) {
    const std::string good = message(1, sizeof(tcp_info));
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_TRUE(readAll(good.substr(0, size)).empty()) << "cut after " << size;
    }
    DiagStatus status{};
    nlmsghdr done{NLMSG_HDRLEN, NLMSG_DONE, 0, 0, 0};
    const std::string end = bytesOf(done);
    EXPECT_EQ(readAll(good + good + end + good, &status).size(), 2u);
    EXPECT_EQ(status, DiagStatus::done);
    std::string foreign = good;
    foreign[NLMSG_HDRLEN] = 77;  // another address family
    std::string endless = good;
    endless[NLMSG_HDRLEN + sizeof(inet_diag_msg)] = 0;  // an attribute of length 0
    endless[NLMSG_HDRLEN + sizeof(inet_diag_msg) + 1] = 0;
    const auto readings = readAll(foreign + endless + good, &status);
    ASSERT_EQ(readings.size(), 2u);
    EXPECT_EQ(readings[0].bytesIn, 0u);
    EXPECT_EQ(readings[1].bytesIn, 1000u);
}

// Readings as often as the budget allows, for 100 s, each at the given cost.
TEST(ReadingBudgetTest, ReadsOftenWhileThatIsCheap) {
    const struct {
        double cost;         // seconds
        double every;        // every so-many-th reading ...
        double peak;         // ... costs this
        double least, most;  // extra readings a second
    } rows[] = {{0.0001, 1e9, 0, 9, 10.1},
                {0.001, 1e9, 0, 4.5, 5.1},
                {0.005, 1e9, 0, 0.9, 1.1},
                {0.0005, 10, 0.010, 2.5, 4.5},
                {0.1, 1e9, 0, 0.03, 0.3}};
    for (const auto& row : rows) {
        ReadingBudget budget;
        double now = 0;
        double used = 0;
        int readings = 0;
        budget.spend(now, 0.02);  // the first search
        for (; now < 100; now += budget.pause()) {
            const double cost = std::fmod(++readings, row.every) == 0 ? row.peak : row.cost;
            budget.spend(now, cost);
            used += cost;
        }
        EXPECT_GE(readings / 100.0, row.least) << row.cost;
        EXPECT_LE(readings / 100.0, row.most) << row.cost;
        EXPECT_TRUE(used / 100 < 0.0056 || row.cost > 0.01) << used;
    }
}

TEST(TraceEventTest, RecordsShorterThanTheirFormat) {
    std::string format;
    const char* names[] = {"skaddr", "oldstate", "newstate", "sport",        "dport",
                           "family", "saddr[4]", "daddr[4]", "saddr_v6[16]", "daddr_v6[16]"};
    const int offsets[] = {8, 16, 20, 24, 26, 28, 31, 35, 39, 55};  // an odd layout, as 5.x had
    for (int index = 0; index < 10; ++index) {
        EXPECT_FALSE(parseTraceFormat(format));
        format += std::string("\tfield:__u8 ") + names[index] +
                  ";\toffset:" + std::to_string(offsets[index]) + ";\tsize:1;\n";
    }
    const auto layout = parseTraceFormat(format);
    ASSERT_TRUE(layout);
    std::vector<std::byte> record(71);
    record[28] = std::byte{AF_INET};
    record[31] = std::byte{10};
    record[24] = std::byte{53};
    const auto change = readStateChange(*layout, record);
    ASSERT_TRUE(change);
    EXPECT_EQ(change->local, (Endpoint{mappedAddress({10, 0, 0, 0}), 53}));
    record.pop_back();
    EXPECT_FALSE(readStateChange(*layout, record));
}

}  // namespace
}  // namespace vostel::nettop
