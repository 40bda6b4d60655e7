#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/Subprocess.h"

namespace vostel {
namespace {

int openDescriptors() {
    int count = 0;
    DIR* directory = opendir("/proc/self/fd");
    while (directory != nullptr && readdir(directory) != nullptr) {
        ++count;
    }
    closedir(directory);
    return count;
}

std::optional<std::string> shell(const std::string& script, double timeout = 20,
                                 std::size_t cap = 1 << 20) {
    return Subprocess::run("/bin/sh", {"-c", script}, timeout, cap);
}

// Every test: nothing of a run stays behind, neither a child (zombie or alive) nor a descriptor.
class SubprocessTest : public testing::Test {
  protected:
    void SetUp() override { before = openDescriptors(); }
    void TearDown() override {
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    }

  private:
    int before = 0;
};

TEST_F(SubprocessTest, WhatComesBack) {
    const struct {
        const char* fault;
        const char* script;
        std::optional<std::string> expected;
        double timeout = 20;
        std::size_t cap = 1 << 20;
    } rows[] = {
        {"bytes changed", "printf 'a\\000b\\377\\n\\n'", std::string("a\0b\xff\n\n", 6)},
        {"no output taken for failure", "true", ""},
        {"failure taken for success", "echo x; exit 3", std::nullopt},
        {"signal taken for success", "echo x; kill -TERM $$", std::nullopt},
        {"standard error mixed in", "echo no >&2; echo yes", "yes\n"},
        {"waits for input", "cat; echo end", "end\n"},
        {"stops at the end of output, not of the program", "exec >&-; sleep 0.2; exit 1",
         std::nullopt},
        {"output end taken for the end", "echo x; exec >&-; sleep 0.2", "x\n"},
        {"hangs when output is closed", "exec >&-; sleep 100", std::nullopt, 0.2},
        {"waits for a grandchild that holds the pipe", "sleep 100 & echo x", "x\n"},
        {"a polite signal only", "trap '' TERM INT HUP; while :; do sleep 100; done", std::nullopt,
         0.2},
        {"endless output fills the memory", "while :; do echo xxxxxxxxxxxxxxxxxxxxxxx; done",
         std::nullopt, 20, 100'000},
        {"a flood hides the time-out", "exec cat /dev/zero", std::nullopt, 0.2, 1u << 30},
        {"cap off by one, below", "printf 12345", "12345", 20, 5},
        {"cap off by one, above", "printf 123456", std::nullopt, 20, 5},
        {"more than a pipe holds is lost", "head -c 300000 /dev/zero", std::string(300'000, '\0')},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(shell(row.script, row.timeout, row.cap), row.expected) << row.fault;
    }
}

TEST_F(SubprocessTest, ProgramsThatCannotStart) {
    EXPECT_EQ(Subprocess::run("/nowhere/program", {}, 5), std::nullopt);
    EXPECT_EQ(Subprocess::run("/etc/passwd", {}, 5), std::nullopt);
    EXPECT_EQ(Subprocess::run("", {}, 5), std::nullopt);
}

TEST_F(SubprocessTest, TheWholeGroupDies) {
    for (const char* wait : {"wait", "exit 0"}) {
        const std::string fifo = testing::TempDir() + "/group" + std::to_string(getpid());
        ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
        const int readEnd = open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        shell("(trap '' TERM; sleep 100) > " + fifo + " & echo x; sleep 0.3; " + wait, 1);
        // The grandchild held the only write end: its death ends the file.
        char byte;
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        ssize_t n = -1;
        while ((n = read(readEnd, &byte, 1)) != 0 && std::chrono::steady_clock::now() < limit) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_EQ(n, 0) << wait;
        close(readEnd);
        unlink(fifo.c_str());
    }
}

TEST_F(SubprocessTest, TheChildInheritsNothing) {
    const int careless = open("/dev/null", O_RDONLY);  // without close-on-exec
    const auto kept = signal(SIGPIPE, SIG_IGN);
    sigset_t block;
    sigset_t old;
    sigemptyset(&block);
    sigaddset(&block, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &block, &old);
    const auto descriptors = Subprocess::run("/bin/ls", {"/proc/self/fd"}, 20);
    const auto status = Subprocess::run("/bin/cat", {"/proc/self/status"}, 20);
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    signal(SIGPIPE, kept);
    close(careless);
    EXPECT_EQ(descriptors, "0\n1\n2\n3\n");  // 3 is the listing itself
    ASSERT_TRUE(status);
    EXPECT_NE(status->find("SigBlk:\t0000000000000000\n"), std::string::npos) << *status;
    const std::size_t ignored = status->find("SigIgn:\t");
    ASSERT_NE(ignored, std::string::npos);
    // Bits 31 and 32 are the C library's own signals.
    EXPECT_EQ(std::stoull(status->substr(ignored + 8), nullptr, 16) & ~0x180000000ULL, 0u);
}

TEST_F(SubprocessTest, ManyThreadsKeepTheirOutputsApart) {
    std::vector<std::thread> threads;
    std::vector<std::optional<std::string>> results(8);
    for (std::size_t i = 0; i < results.size(); ++i) {
        threads.emplace_back([&results, i] {
            for (int round = 0; round < 5; ++round) {
                results[i] = shell("echo " + std::to_string(i) + "; sleep 0.01");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_EQ(results[i], std::to_string(i) + "\n");
    }
}

}  // namespace
}  // namespace vostel
