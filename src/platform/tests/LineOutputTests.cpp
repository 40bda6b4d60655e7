#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <climits>
#include <string>

#include "platform/LineOutput.h"

namespace vostel {
namespace {

// A descriptor to write to and what reads from it.
struct Pair {
    int reading = -1;
    int writing = -1;
    ~Pair() {
        close(reading);
        close(writing);
    }
};

Pair makePair(const std::string& kind) {
    Pair made;
    int ends[2] = {-1, -1};
    if (kind == "pipe") {
        EXPECT_EQ(pipe(ends), 0);
    } else if (kind == "socket") {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    } else {
        EXPECT_EQ(openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr), 0);
    }
    made.reading = ends[0];
    made.writing = ends[1];
    return made;
}

std::string readable(int descriptor) {
    std::string text;
    char bytes[4096];
    pollfd ready{descriptor, POLLIN, 0};
    while (poll(&ready, 1, 0) == 1 && (ready.revents & POLLIN) != 0) {
        const ssize_t n = read(descriptor, bytes, sizeof bytes);
        if (n <= 0) break;
        text.append(bytes, static_cast<std::size_t>(n));
    }
    return text;
}

}  // namespace

// A write that waits would hang here for good (the alarm ends the test), and one that makes the
// descriptor itself not wait would change it for every process that shares it.
TEST(LineOutput, NeverWaitsForAReaderThatStopped) {
    signal(SIGPIPE, SIG_IGN);
    alarm(60);
    for (const char* kind : {"pipe", "socket", "terminal"}) {
        const Pair pair = makePair(kind);
        const std::string line(99, 'x');
        int written = 0;
        while (writeLine(pair.writing, line) == LineOutput::Written) {
            ASSERT_LT(++written, 1000000) << kind;
        }
        EXPECT_GT(written, 20) << kind;
        EXPECT_EQ(writeLine(pair.writing, line), LineOutput::Dropped) << kind;
        EXPECT_EQ(fcntl(pair.writing, F_GETFL) & O_NONBLOCK, 0) << kind;
        const std::string text = readable(pair.reading);
        EXPECT_GE(text.size(), static_cast<std::size_t>(written) * 100) << kind;
        EXPECT_EQ(writeLine(pair.writing, "again"), LineOutput::Written) << kind;
        EXPECT_EQ(readable(pair.reading).substr(0, 5), "again") << kind;
    }
    alarm(0);
}

TEST(LineOutput, TellsThatTheReaderIsGone) {
    signal(SIGPIPE, SIG_IGN);
    for (const char* kind : {"pipe", "socket"}) {
        Pair pair = makePair(kind);
        EXPECT_EQ(writeLine(pair.writing, "one"), LineOutput::Written) << kind;
        close(pair.reading);
        pair.reading = -1;
        EXPECT_EQ(writeLine(pair.writing, "two"), LineOutput::Closed) << kind;
    }
    EXPECT_EQ(writeLine(-1, "nowhere"), LineOutput::Dropped);
}

TEST(LineOutput, AppendsToAFileAndCutsWhatIsLong) {
    std::FILE* file = std::tmpfile();
    const int descriptor = fileno(file);
    EXPECT_EQ(writeLine(descriptor, "one"), LineOutput::Written);
    EXPECT_EQ(writeLine(descriptor, std::string(100000, 'y')), LineOutput::Written);
    char bytes[20000];
    const ssize_t n = pread(descriptor, bytes, sizeof bytes, 0);
    ASSERT_EQ(n, 4 + PIPE_BUF);
    EXPECT_EQ(std::string(bytes, 6), "one\nyy");
    EXPECT_EQ(bytes[n - 1], '\n');
    std::fclose(file);
}

}  // namespace vostel
