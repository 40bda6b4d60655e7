#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "platform/linux/ProcProcessSource.h"

namespace vostel {
namespace {

constexpr ProcUnits units{.ticksPerSecond = 100, .pageBytes = 4096};
const std::string tail =
    " S 1 77 77 0 -1 4194560 5 6 7 8 250 50 9000 8000 20 0 3 0 12345 99999744 2000 "
    "18446744073709551615 1 1 0 0 0 0 0 4096 0 0 0 0 17 1 0 0 0 0 0 0 0 0 0 0 0 0 0\n";

TEST(ProcProcessSourceTest, NamesThatLookLikeTheLineItself) {
    for (const std::string comm :
         {"sh", "a b", ") S 1 2 3 (", "((", "))", "", "x\ny", "\xff\xfe", "kworker/0:1-(wq)"}) {
        ProcessRecord record;
        ASSERT_TRUE(parsePidStat("77 (" + comm + ")" + tail, units, record)) << comm;
        EXPECT_EQ(record.comm, comm);
        EXPECT_EQ(record.pid, 77);
        EXPECT_DOUBLE_EQ(record.cpuSeconds, 3.0);  // children's 90 and 80 s are not its own
        EXPECT_DOUBLE_EQ(record.startSeconds, 123.45);
        EXPECT_EQ(record.residentBytes, 2000u * 4096);
        EXPECT_FALSE(record.kernelThread);
    }
}

TEST(ProcProcessSourceTest, EveryCutLineIsRefusedOrWhole) {
    const std::string line = "77 (sh)" + tail;
    const std::size_t needed = line.find(" 2000 ") + 2;
    ProcessRecord record;
    for (std::size_t size = 0; size < needed; ++size) {
        EXPECT_FALSE(parsePidStat(line.substr(0, size), units, record)) << size;
    }
    for (const char* bad : {"x (sh) S", "-5 (a) S", "77 )sh( S 1 1 1 1 1 1 1 1 1 1 1 1", "77"}) {
        EXPECT_FALSE(parsePidStat(bad + tail, units, record)) << bad;
    }
}

TEST(ProcProcessSourceTest, ControlGroupOfEveryHierarchyLayout) {
    EXPECT_EQ(cgroupPath("0::/user.slice/app-x-1.scope\n"), "/user.slice/app-x-1.scope");
    EXPECT_EQ(cgroupPath("12:cpu:/a\n1:name=systemd:/b:c\n0::/\n"), "/b:c");
    EXPECT_EQ(cgroupPath("1:name=systemd:/b\n0::/u\n"), "/u");
    EXPECT_EQ(cgroupPath("garbage\n\n:"), "");
}

TEST(ProcProcessSourceTest, AppImageOfAMount) {
    const char* const mounts =
        "22 1 8:1 / / rw shared:1 - ext4 /dev/sda1 rw\n"
        "90 22 0:50 / /tmp/.mount_KritaAb1Cd2 ro,nosuid shared:4 - fuse.Krita-5.AppImage "
        "Krita-5.AppImage ro,user_id=1000\n"
        "91 22 0:51 / /tmp/.mount_KritaAb1Cd3 ro - fuse /home/u/Other.AppImage ro\n"
        "92 22 0:52 / /run/.mount_x ro - fuse.y";
    EXPECT_EQ(appImageOf("/tmp/.mount_KritaAb1Cd2/usr/bin/krita", mounts), "Krita-5.AppImage");
    EXPECT_EQ(appImageOf("/tmp/.mount_KritaAb1Cd3/AppRun", mounts), "") << "not of the runtime";
    EXPECT_EQ(appImageOf("/tmp/.mount_KritaAb1Cd2", mounts), "");
    EXPECT_EQ(appImageOf("/tmp/.mount_Krita/AppRun", mounts), "");
    EXPECT_EQ(appImageOf("/run/.mount_x/AppRun", mounts), "");
    EXPECT_EQ(appImageOf("/usr/bin/krita", mounts), "");
}

TEST(ProcProcessSourceTest, OnlyProcessesOfACapturedTreeInOrder) {
    const std::filesystem::path root = testing::TempDir() + "/proctree" + std::to_string(getpid());
    for (const char* pid : {"300", "20", "1", "self", "12345678901"}) {
        std::filesystem::create_directories(root / pid);
        std::ofstream(root / pid / "stat") << pid << " (sh)" << tail;
    }
    std::filesystem::create_directories(root / "400");  // ended after it was listed
    SystemRoots roots;
    roots.proc = root;
    ProcProcessSource source(roots);
    std::vector<ProcessRecord> records(50);
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(source.read(records));
        std::vector<int> pids;
        for (const ProcessRecord& record : records) {
            pids.push_back(record.pid);
        }
        EXPECT_EQ(pids, (std::vector<int>{1, 20, 300}));
    }
    std::filesystem::remove_all(root);
    EXPECT_FALSE(source.read(records));
    EXPECT_TRUE(records.empty());
}

TEST(ProcProcessSourceTest, ThisProcessAndItsSuccessor) {
    ProcProcessSource source(SystemRoots::ofThisMachine());
    std::vector<ProcessRecord> records;
    ASSERT_TRUE(source.read(records));
    const auto self = std::find_if(records.begin(), records.end(),
                                   [](const auto& record) { return record.pid == getpid(); });
    ASSERT_NE(self, records.end());
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    EXPECT_NEAR(self->startSeconds, static_cast<double>(now.tv_sec), 60);
    EXPECT_GT(self->residentBytes, 1u << 20);
    const auto details = source.details(getpid(), self->startSeconds);
    ASSERT_TRUE(details);
    EXPECT_EQ(details->executable, std::filesystem::read_symlink("/proc/self/exe"));
    ASSERT_FALSE(details->arguments.empty());
    EXPECT_TRUE(details->arguments[0].ends_with("process_source_tests"));
    EXPECT_EQ(details->folder, std::filesystem::current_path());
    EXPECT_TRUE(source.details(getpid(), -1));
    EXPECT_FALSE(source.details(getpid(), self->startSeconds + 0.01)) << "another owner of the pid";

    // A zombie has no arguments and no memory, but it is no error.
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    siginfo_t info;
    waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT);
    const auto zombie = source.details(child, -1);
    ASSERT_TRUE(zombie);
    EXPECT_TRUE(zombie->arguments.empty());
    waitpid(child, nullptr, 0);
    EXPECT_FALSE(source.details(child, -1));
}

}  // namespace
}  // namespace vostel
