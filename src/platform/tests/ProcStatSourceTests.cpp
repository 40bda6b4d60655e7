#include <gtest/gtest.h>

#include "platform/linux/ProcStatSource.h"
#include "platform/tests/TemporaryTree.h"

namespace vostel {
namespace {

TEST(ProcStatSourceTest, CpuListsOfSysfs) {
    EXPECT_EQ(parseCpuList("0-2,5,7-8\n"), (std::set<int>{0, 1, 2, 5, 7, 8}));
    EXPECT_EQ(parseCpuList(""), std::set<int>{});
    EXPECT_EQ(parseCpuList("x,3-,4"), std::set<int>{4});
    EXPECT_LE(parseCpuList("0-99999999999").size(), 8192u);
}

TEST(ProcStatSourceTest, LinesOfKernelsOldAndNew) {
    // One processor with guest time (inside user and nice), two gone off line, a short line of
    // a 2.4 kernel, a line cut off by the end of the buffer.
    const auto processors = parseProcStat(
        "cpu  9 9 9 9 9 9 9 9 9 9\n"
        "cpu0 100 20 30 400 50 6 7 8 90 10\n"
        "cpu3 1 2 3 4\n"
        "cpu4 1 2 3\n"
        "cpu5 x\n"
        "cpu6 1 2 3 4 18446744073709551616\n"
        "cpu7 1 2 3 40");
    ASSERT_EQ(processors.size(), 3u);
    EXPECT_EQ(processors[0].user, 100u);
    EXPECT_EQ(processors[0].nice, 20u);
    EXPECT_EQ(processors[0].system, 30u + 6 + 7 + 8);
    EXPECT_EQ(processors[0].idle, 400u + 50);
    EXPECT_EQ(processors[1].id, 3);
    EXPECT_EQ(processors[1].idle, 4u);
    EXPECT_EQ(processors[2].id, 6);
}

class ProcStatTreeTest : public testing::Test {
  protected:
    void writeStat(const std::vector<int>& ids, const std::string& tail = "intr 1 2 3\nctxt 9\n") {
        std::string text = "cpu  0 0 0 0 0 0 0 0 0 0\n";
        for (int id : ids) {
            text +=
                "cpu" + std::to_string(id) + " " + std::to_string(id + 1) + " 0 0 0 0 0 0 0 0 0\n";
        }
        tree.write("proc/stat", text + tail);
    }

    static std::vector<int> users(const std::vector<std::int32_t>& ticks) {
        std::vector<int> result;
        for (std::size_t i = 0; i < ticks.size(); i += 4) {
            result.push_back(ticks[i]);
        }
        return result;
    }

    TemporaryTree tree;
    SystemRoots roots{
        .proc = tree.root + "/proc", .sys = tree.root + "/sys", .home = {}, .dataDirs = {}};
};

TEST_F(ProcStatTreeTest, ManyProcessorsAndALongInterruptLine) {
    std::vector<int> ids(256);
    for (int i = 0; i < 256; ++i) {
        ids[static_cast<std::size_t>(i)] = i;
    }
    std::string interrupts = "intr";
    for (int i = 0; i < 60000; ++i) {
        interrupts += " 0";
    }
    writeStat(ids, interrupts + "\n");
    ProcStatSource source(roots);
    EXPECT_EQ(source.ticks().size(), 1024u);
    EXPECT_EQ(source.activeProcessorCount(), 256);
    EXPECT_EQ(source.coreCounts().efficiency, 0);
}

TEST_F(ProcStatTreeTest, EfficiencyProcessorsComeFirst) {
    // A hybrid laptop: processors 0-3 are two performance cores with two threads each.
    writeStat({0, 1, 2, 3, 4, 5, 6, 7});
    tree.write("sys/devices/cpu_core/cpus", "0-3\n");
    tree.write("sys/devices/cpu_atom/cpus", "4-7\n");
    ProcStatSource source(roots);
    EXPECT_EQ(users(source.ticks()), (std::vector{5, 6, 7, 8, 1, 2, 3, 4}));
    EXPECT_EQ(source.coreCounts().performance, 4);
    EXPECT_EQ(source.coreCounts().efficiency, 4);
    // Two efficiency processors go off line while it runs.
    writeStat({0, 1, 2, 3, 4, 5});
    EXPECT_EQ(users(source.ticks()), (std::vector{5, 6, 1, 2, 3, 4}));
    EXPECT_EQ(source.coreCounts().efficiency, 2);
    EXPECT_EQ(source.activeProcessorCount(), 6);
}

TEST_F(ProcStatTreeTest, KindsFromCapacity) {
    writeStat({0, 1, 2, 3});
    for (const auto& [cpu, capacity] :
         {std::pair(0, 1024), std::pair(1, 446), std::pair(2, 446), std::pair(3, 871)}) {
        tree.write("sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/cpu_capacity",
                   std::to_string(capacity) + "\n");
    }
    ProcStatSource source(roots);
    EXPECT_EQ(users(source.ticks()), (std::vector{2, 3, 1, 4}));
    EXPECT_EQ(source.coreCounts().performance, 2);
}

TEST_F(ProcStatTreeTest, AMissingFileIsNoReadingAndLaterOneIs) {
    ProcStatSource source(roots);
    EXPECT_TRUE(source.ticks().empty());
    const std::string why = "cannot read " + roots.proc + "/stat: No such file or directory";
    EXPECT_EQ(source.health.error(), why);
    EXPECT_EQ(source.activeProcessorCount(), 1);
    writeStat({0});
    EXPECT_EQ(source.ticks().size(), 4u);
    EXPECT_EQ(source.health.error(), "");
    EXPECT_EQ(source.health.lastError(), why);
    tree.write("proc/stat", "intr 1 2 3\n");
    EXPECT_TRUE(source.ticks().empty());
    EXPECT_EQ(source.health.error(), roots.proc + "/stat names no processors");
}

}  // namespace
}  // namespace vostel
