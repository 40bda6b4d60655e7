#include "platform/Subprocess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <limits>
#include <mutex>
#include <utility>

namespace vostel::Subprocess {

namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

constexpr int blindPollMilliseconds = 20;  // without a pidfd: how often to ask if the child ended
constexpr int killMilliseconds = 1000;  // a killed child that is still there is stuck in a driver

class Descriptor {
  public:
    explicit Descriptor(int openDescriptor = -1) : value(openDescriptor) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : value(std::exchange(other.value, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            reset(std::exchange(other.value, -1));
        }
        return *this;
    }
    void reset(int next = -1) {
        if (value >= 0) {
            close(value);
        }
        value = next;
    }
    int get() const { return value; }

  private:
    int value;
};

struct Child {
    pid_t pid = -1;
    Descriptor output;
    Descriptor pidfd;  // -1 on kernels before 5.3
};

// Children that did not die in time. Each later run tries again to reap them.
std::mutex strayLock;
std::vector<pid_t> strays;

void reapStrays() {
    const std::lock_guard guard(strayLock);
    std::erase_if(strays, [](pid_t pid) { return waitpid(pid, nullptr, WNOHANG) != 0; });
}

// A pipe whose both ends lie above the standard descriptors, which the child's setup overwrites.
bool makePipe(Descriptor& readEnd, Descriptor& writeEnd) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    const Descriptor lowRead(ends[0]);
    const Descriptor lowWrite(ends[1]);
    readEnd.reset(fcntl(ends[0], F_DUPFD_CLOEXEC, 3));
    writeEnd.reset(fcntl(ends[1], F_DUPFD_CLOEXEC, 3));
    return readEnd.get() >= 0 && writeEnd.get() >= 0 &&
           fcntl(readEnd.get(), F_SETFL, O_NONBLOCK) == 0;
}

int spawn(Child& child, const std::string& path, const std::vector<std::string>& arguments,
          int output) {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(path.c_str()));
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    sigset_t all;
    sigset_t none;
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(
        &attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 34)
    // A library that opened a file without close-on-exec must not leak it either.
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
#endif
    const int error =
        posix_spawn(&child.pid, path.c_str(), &actions, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

// True when the child has ended; it stays a zombie, so that its group number stays ours.
bool hasEnded(pid_t pid) {
    siginfo_t info{};
    const int result = waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT);
    return (result == 0 && info.si_pid == pid) || (result < 0 && errno == ECHILD);
}

int millisecondsUntil(SteadyTime deadline) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<long long>(left.count(), 0, 3'600'000));
}

// Appends what the pipe holds now, in at most `reads` pieces, so that a flood cannot keep us from
// looking at the time. False when more than `cap` bytes have come.
bool drain(Descriptor& pipe, std::string& text, std::size_t cap, int reads) {
    char chunk[16384];
    for (; pipe.get() >= 0 && reads > 0; --reads) {
        const ssize_t n = read(pipe.get(), chunk, sizeof chunk);
        if (n > 0) {
            if (static_cast<std::size_t>(n) > cap - text.size()) {
                return false;
            }
            text.append(chunk, static_cast<std::size_t>(n));
        } else if (n == 0) {
            pipe.reset();
        } else if (errno != EINTR) {
            if (errno != EAGAIN) {
                pipe.reset();
            }
            return true;
        }
    }
    return true;
}

// Reads until the child ends. False on time-out or too much output.
bool collect(Child& child, SteadyTime deadline, std::string& text, std::size_t cap) {
    for (;;) {
        if (hasEnded(child.pid)) {
            kill(-child.pid, SIGKILL);  // nobody writes on while the rest is read
            return drain(child.output, text, cap, std::numeric_limits<int>::max());
        }
        if (!drain(child.output, text, cap, 8)) {
            return false;
        }
        const int left = millisecondsUntil(deadline);
        if (left == 0) {
            return false;
        }
        pollfd watched[2] = {{child.output.get(), POLLIN, 0}, {child.pidfd.get(), POLLIN, 0}};
        poll(watched, 2, child.pidfd.get() >= 0 ? left : std::min(left, blindPollMilliseconds));
    }
}

// Kills what is left of the group and reaps the child. True when it had ended well by itself.
bool finish(Child& child) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(killMilliseconds);
    kill(-child.pid, SIGKILL);
    while (!hasEnded(child.pid)) {
        const int left = millisecondsUntil(deadline);
        if (left == 0) {
            const std::lock_guard guard(strayLock);
            strays.push_back(child.pid);
            return false;
        }
        pollfd watched = {child.pidfd.get(), POLLIN, 0};
        poll(&watched, 1, child.pidfd.get() >= 0 ? left : std::min(left, blindPollMilliseconds));
    }
    int status = 0;
    pid_t reaped;
    do {
        reaped = waitpid(child.pid, &status, 0);
    } while (reaped < 0 && errno == EINTR);
    return reaped == child.pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

std::optional<std::string> run(const std::string& path, const std::vector<std::string>& arguments,
                               double timeoutSeconds, std::size_t outputCap) {
    reapStrays();
    constexpr double longest = 86400;
    const double seconds = timeoutSeconds > 0 ? std::min(timeoutSeconds, longest) : 0;
    const auto deadline =
        std::chrono::steady_clock::now() +
        std::chrono::duration_cast<SteadyTime::duration>(std::chrono::duration<double>(seconds));
    Child child;
    {
        Descriptor writeEnd;
        if (!makePipe(child.output, writeEnd) ||
            spawn(child, path, arguments, writeEnd.get()) != 0) {
            return std::nullopt;
        }
    }
#ifdef SYS_pidfd_open
    child.pidfd.reset(static_cast<int>(syscall(SYS_pidfd_open, child.pid, 0)));
#endif
    std::string text;
    const bool complete = collect(child, deadline, text, outputCap);
    if (!finish(child) || !complete) {
        return std::nullopt;
    }
    return text;
}

}  // namespace vostel::Subprocess
