#include <gtest/gtest.h>

#include <filesystem>

#include "platform/linux/MeminfoSource.h"
#include "platform/tests/TemporaryTree.h"

namespace vostel {
namespace {

constexpr double kB = 1024;

class MeminfoTest : public testing::Test {
  protected:
    double used() {
        MeminfoSource source(roots);
        const auto counters = source.counters();
        return counters ? counters->active + counters->wired + counters->compressed : -1;
    }

    TemporaryTree tree;
    SystemRoots roots{
        .proc = tree.root + "/proc", .sys = tree.root + "/sys", .home = {}, .dataDirs = {}};
};

TEST_F(MeminfoTest, LaptopWithZram) {
    tree.write(
        "proc/meminfo",
        "MemTotal:       16069348 kB\nMemFree:          512340 kB\nMemAvailable:    4012344 kB\n"
        "Buffers:            2108 kB\nCached:          4803124 kB\nSwapCached:       120044 kB\n"
        "Active:          6003124 kB\nAnonPages:       6904120 kB\nShmem:            903412 kB\n"
        "SReclaimable:     310224 kB\nSwapTotal:       8388604 kB\nZswap:                 0 kB\n");
    tree.write("sys/block/zram0/mm_stat",
               "4194304000 1100000000 1181116416        0 1181116416    12345        0      100    "
               "    0\n");
    tree.write("sys/block/nvme0n1/mm_stat", "1 2 99999999999\n");
    MeminfoSource source(roots);
    const auto counters = source.counters();
    ASSERT_TRUE(counters);
    EXPECT_EQ(counters->active, (6904120.0 + 903412) * kB);
    EXPECT_EQ(counters->compressed, 1181116416.0);
    const double expected =
        (16069348.0 - 512340 - 2108 - (4803124 - 903412) - 310224 - 120044) * kB;
    EXPECT_EQ(used(), expected);
    EXPECT_EQ(source.physicalMemory(), 16069348 * kB);
}

// Catches compressed pages that are left out, counted twice or taken for something reclaimable.
TEST_F(MeminfoTest, CompressedPagesInZswapAndInSeveralZramDevices) {
    const auto meminfo = [](const char* zswap) {
        return std::string(
                   "MemTotal:        8000000 kB\nMemFree:         1000000 kB\nBuffers:           "
                   "10000 kB\nCached:          2000000 kB\nSwapCached:        50000 kB\nAnonPages: "
                   " "
                   "     3000000 kB\nShmem:            200000 kB\nSReclaimable:     140000 kB\n") +
               "Zswap:            " + zswap + " kB\nZswapped:        1900000 kB\n";
    };
    constexpr double all = (8000000.0 - 1000000 - 10000 - 1800000 - 140000 - 50000) * kB;
    constexpr double held = (3000000.0 + 200000) * kB;
    const struct {
        const char* zswap;
        std::vector<const char*> zram;  // mm_stat: what was written, compressed, memory used, ...
        double compressed;
    } rows[] = {
        {"700000", {}, 700000 * kB},
        {"0", {"4096 2048 81920000 0 0 0 0 0 0\n", "4096 2048 1024000 0 0 0 0 0 0\n"}, 82944000},
        {"700000", {"4096 2048 81920000 0 0 0 0 0 0\n"}, 700000 * kB + 81920000},
    };
    for (const auto& row : rows) {
        std::filesystem::remove_all(tree.root + "/sys");
        tree.write("proc/meminfo", meminfo(row.zswap));
        for (std::size_t i = 0; i < row.zram.size(); ++i) {
            tree.write("sys/block/zram" + std::to_string(i) + "/mm_stat", row.zram[i]);
        }
        const auto counters = MeminfoSource(roots).counters();
        ASSERT_TRUE(counters);
        EXPECT_EQ(counters->compressed, row.compressed);
        EXPECT_EQ(counters->active, held);
        EXPECT_EQ(counters->wired, all - held - row.compressed);
    }
}

TEST_F(MeminfoTest, ServerWithZfs) {
    tree.write(
        "proc/meminfo",
        "MemTotal:       131900000 kB\nMemFree:        20000000 kB\nBuffers:           50000 kB\n"
        "Cached:          1500000 kB\nSwapCached:            0 kB\nAnonPages:      21000000 kB\n"
        "Shmem:            200000 kB\nSReclaimable:     900000 kB\nSwapTotal:             0 kB\n");
    tree.write(
        "proc/spl/kstat/zfs/arcstats",
        "13 1 0x01 123 33456 7777 8888\nname                            type data\n"
        "hits                            4    99\nc_min                           4    4000000000\n"
        "c_max                           4    67000000000\nsize                            4    "
        "64000000000\n"
        "compressed_size                 4    5\n");
    EXPECT_EQ(used(), (131900000.0 - 20000000 - 50000 - 1300000 - 900000) * kB - 60e9);
}

TEST_F(MeminfoTest, OldKernelAndOddFiles) {
    // 2.6.18: no MemAvailable, Shmem or SReclaimable.
    tree.write(
        "proc/meminfo",
        "MemTotal:  2074000 kB\nMemFree:  74000 kB\nBuffers:  100000 kB\nCached:  900000 kB\n");
    EXPECT_EQ(used(), 1000000 * kB);
    // Garbage lines, an absurd value, more cached than there is memory: bounded, never negative.
    tree.write("proc/meminfo",
               "MemTotal:  1000 kB\nnonsense\n:\nMemFree: x\nBuffers: 99999999999999999999 kB\n"
               "Cached:  5000 kB\nAnonPages: 300 kB");
    EXPECT_EQ(used(), 300 * kB);
    tree.write("proc/meminfo", "");
    EXPECT_EQ(used(), -1);
}

}  // namespace
}  // namespace vostel
