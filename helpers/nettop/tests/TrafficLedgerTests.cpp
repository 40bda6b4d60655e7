#include <gtest/gtest.h>

#include "TrafficLedger.h"

namespace vostel::nettop {
namespace {

// A small machine: sockets and who holds them, read into a ledger.
class TrafficLedgerTest : public testing::Test {
  protected:
    struct Open {
        SocketReading reading;
        Holder holder;
    };
    static SocketReading socket(std::uint64_t cookie, std::uint64_t in, std::uint64_t out) {
        SocketReading reading;
        reading.cookie = cookie;
        reading.inode = static_cast<std::uint32_t>(cookie + 1000);
        reading.bytesIn = in;
        reading.bytesOut = out;
        return reading;
    }
    void read(bool search = true, bool notices = false) {
        for (const auto& [cookie, entry] : machine)
            ledger.observe(1, entry.reading);
        ledger.finishNamespace(1, notices);
        const auto wanted = ledger.wanted();
        asked = wanted.size();
        for (const auto& [cookie, entry] : machine) {
            if (search && entry.holder.pid != 0 && wanted.contains(entry.reading.inode)) {
                ledger.hold(entry.reading.inode, entry.holder);
            }
        }
        ledger.searched();
        ledger.finishReading();
    }
    std::string rows() {
        std::string text;
        for (const TrafficRow& row : ledger.rows()) {
            text += row.name + "." + std::to_string(row.pid) + " " + std::to_string(row.bytesIn) +
                    " " + std::to_string(row.bytesOut) + ";";
        }
        return text;
    }
    void open(std::uint64_t cookie, std::uint64_t in, std::uint64_t out, const Holder& holder) {
        machine[cookie] = {socket(cookie, in, out), holder};
    }
    TrafficLedger ledger;
    std::map<std::uint64_t, Open> machine;
    std::size_t asked = 0;
    const Holder ann{7, 100, 3, "ann"};
    const Holder bob{8, 200, 4, "bob"};
};

TEST_F(TrafficLedgerTest, TotalsNeverFallWhateverHappensToSockets) {
    open(1, 100, 10, ann);
    open(2, 50, 5, ann);
    read();
    EXPECT_EQ(rows(), "ann.7 150 15;");
    machine.erase(2);  // closed, with no notice
    read();
    EXPECT_EQ(rows(), "ann.7 150 15;");
    open(1, 20, 2, ann);  // disconnected and connected anew: counters began again
    read();
    EXPECT_EQ(rows(), "ann.7 170 17;");
    machine[1].reading.inode = 0;  // closed by the process, still sending
    machine[1].reading.bytesOut = 9;
    read();
    EXPECT_EQ(rows(), "ann.7 170 24;");
    ledger.observeClosed(1, socket(1, 21, 12));  // its last counters
    machine.erase(1);
    read();
    EXPECT_EQ(rows(), "ann.7 171 27;");
    ledger.observeClosed(1, socket(1, 21, 12), bob);  // told twice: nobody gets it again
    ledger.processGone(8);
    read();
    EXPECT_EQ(ledger.owners().size(), 1u);
}

TEST_F(TrafficLedgerTest, ASocketMissedByOneDumpIsNotCountedTwice) {
    open(1, 100, 0, ann);
    read();
    const auto kept = machine;
    machine.clear();
    read();
    read();
    machine = kept;
    machine[1].reading.bytesIn = 130;
    read();
    EXPECT_EQ(rows(), "ann.7 130 0;");
    machine.clear();
    for (int count = 0; count < 5; ++count)
        read();
    EXPECT_EQ(ledger.socketCount(), 0u) << "kept for ever";
}

TEST_F(TrafficLedgerTest, GrowthGoesToWhoHoldsTheSocketNow) {
    open(1, 100, 0, ann);
    read();
    machine[1].reading.bytesIn = 160;
    machine[1].holder = bob;  // handed over
    ledger.release(1001);
    read();
    EXPECT_EQ(rows(), "ann.7 100 0;bob.8 60 0;");
    ledger.processGone(8);  // bob ends, ann still holds it as well
    read();
    machine[1].holder = ann;
    machine[1].reading.bytesIn = 165;
    read();
    EXPECT_EQ(rows(), "ann.7 105 0;bob.8 60 0;");
}

TEST_F(TrafficLedgerTest, SocketsThatCameAndWentBetweenReadings) {
    SocketReading listener = socket(5, 0, 0);
    listener.listening = true;
    listener.local.port = 80;
    machine[5] = {listener, ann};
    read();
    SocketReading served = socket(6, 300, 30);
    served.local = {mappedAddress({10, 0, 0, 1}), 80};
    ledger.observeClosed(1, served);
    ledger.observeClosed(2, served);  // the same port in another namespace is not ann's
    ledger.observeClosed(1, socket(7, 0, 4000), bob);
    ledger.processGone(8);
    read();
    EXPECT_EQ(rows(), "ann.7 300 30;bob.8 0 0;") << "a baseline for one that has already gone";
    EXPECT_EQ(rows(), "ann.7 300 30;bob.8 0 4000;");
    for (int block = 2; block < TrafficLedger::lingeringBlocks; ++block) {
        EXPECT_EQ(rows(), "ann.7 300 30;bob.8 0 4000;") << block;
    }
    EXPECT_EQ(rows(), "ann.7 300 30;") << "an ended process stays for ever";
}

TEST_F(TrafficLedgerTest, APidGivenOutAnewInheritsNothing) {
    open(1, 100, 0, ann);
    read();
    machine.clear();
    open(2, 5, 0, Holder{7, 999, 3, "eve"});
    read();
    EXPECT_EQ(rows(), "eve.7 5 0;");
    ledger.observeClosed(1, socket(1, 900, 0));  // of the first one
    read();
    EXPECT_EQ(rows(), "eve.7 5 0;");
}

TEST_F(TrafficLedgerTest, LateFindsAreNoBursts) {
    open(1, 1'000'000, 0, ann);  // was there before, its holder out of sight
    read(false);
    machine[1].reading.bytesIn += 7;
    for (int count = 0; count < 2; ++count)
        read(true);
    EXPECT_EQ(rows(), "ann.7 7 0;");
    open(2, 40, 0, bob);  // opened under our eyes, found one reading later
    read(false);
    machine[2].reading.bytesIn = 60;
    for (int count = 0; count < 2; ++count)
        read(true);
    EXPECT_EQ(rows(), "ann.7 7 0;bob.8 60 0;");
}

TEST_F(TrafficLedgerTest, SearchesForWhatCannotBeFoundGetRare) {
    open(1, 1, 1, Holder{});
    int searches = 0;
    for (int count = 0; count < 1000; ++count) {
        read();
        searches += asked > 0 ? 1 : 0;
    }
    EXPECT_LT(searches, 30);
    EXPECT_GT(searches, 12);
}

TEST_F(TrafficLedgerTest, MemoryIsBounded) {
    for (std::uint64_t cookie = 1; cookie < TrafficLedger::maximumSockets + 500; ++cookie) {
        ledger.observe(1, socket(cookie, 1, 1));
    }
    EXPECT_EQ(ledger.socketCount(), TrafficLedger::maximumSockets);
    ledger.forgetNamespace(1);
    ledger.finishReading();
    open(1, 1, 1, ann);
    read();
    for (int pid = 1000; pid < 1300 + static_cast<int>(TrafficLedger::maximumProcesses); ++pid) {
        ledger.observeClosed(1, socket(90'000 + static_cast<std::uint64_t>(pid), 1, 1),
                             Holder{pid, 1, -1, "p"});
    }
    read();
    const auto all = ledger.rows();
    EXPECT_EQ(all.size(), TrafficLedger::maximumProcesses);
    EXPECT_EQ(all.front().name, "ann") << "one with open sockets went first";
}

}  // namespace
}  // namespace vostel::nettop
