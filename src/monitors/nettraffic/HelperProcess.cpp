#include "monitors/nettraffic/HelperProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <optional>

extern char** environ;

namespace vostel {

namespace {

// Becomes readable when the stop is requested, so that it ends a poll().
class StopSignal {
  public:
    explicit StopSignal(const std::stop_token& stop)
        : descriptor(eventfd(0, EFD_CLOEXEC)), callback(std::in_place, stop, Raise{descriptor}) {}
    ~StopSignal() {
        callback.reset();  // waits for one that runs: the number may soon be another file's
        close(descriptor);
    }
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;
    int get() const { return descriptor; }

  private:
    struct Raise {
        int descriptor;
        void operator()() const {
            const std::uint64_t one = 1;
            [[maybe_unused]] const ssize_t written = write(descriptor, &one, sizeof one);
        }
    };
    int descriptor;
    std::optional<std::stop_callback<Raise>> callback;
};

// The monotonic clock stands still during a suspend, in which no program can be expected to write.
double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// For poll(): rounded up, so that nobody spins through the last millisecond.
int milliseconds(double seconds) {
    constexpr double longest = 86'400;
    return static_cast<int>(std::ceil(std::clamp(seconds, 0.0, longest) * 1000));
}

// Starts the program; returns its pid, or -1.
pid_t start(const HelperProcess::Command& command, int output) {
    std::vector<char*> words{const_cast<char*>(command.program.c_str())};
    for (const std::string& argument : command.arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    // Whatever this program blocks or ignores, the helper starts with the usual signals.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    pid_t child = -1;
    const int error =
        posix_spawn(&child, command.program.c_str(), &files, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return error == 0 ? child : -1;
}

void endAndReap(pid_t child) {
    kill(child, SIGKILL);
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

// Hands on the output until it ends, nothing whole comes any more, or `stopSignal` is there.
HelperProcess::End readOutput(int output, int stopSignal, double patience,
                              const std::function<bool(std::string_view)>& take) {
    std::vector<char> piece(64 * 1024);
    double deadline = monotonicSeconds() + patience;
    for (;;) {
        pollfd waits[2] = {{stopSignal, POLLIN, 0}, {output, POLLIN, 0}};
        const double left = deadline - monotonicSeconds();
        if (poll(waits, 2, milliseconds(left)) < 0) {
            if (errno == EINTR) continue;
            return HelperProcess::End::ended;
        }
        if (waits[0].revents != 0) {
            return HelperProcess::End::stopped;
        }
        if (waits[1].revents != 0) {
            const ssize_t size = read(output, piece.data(), piece.size());
            if (size < 0 && errno == EINTR) {
                continue;
            }
            if (size <= 0) {
                return HelperProcess::End::ended;
            }
            if (take({piece.data(), static_cast<std::size_t>(size)})) {
                deadline = monotonicSeconds() + patience;
                continue;
            }
        }
        if (left <= 0) {
            return HelperProcess::End::silent;
        }
    }
}

}  // namespace

HelperProcess::End HelperProcess::run(const Command& command, const std::stop_token& stop,
                                      const std::function<bool(std::string_view)>& take) {
    const StopSignal signal(stop);
    int ends[2];
    if (signal.get() < 0 || pipe2(ends, O_CLOEXEC) != 0) {
        return End::cannotStart;
    }
    const pid_t child = start(command, ends[1]);
    close(ends[1]);
    if (child < 0) {
        close(ends[0]);
        return End::cannotStart;
    }
    const End end = readOutput(ends[0], signal.get(), command.patience, take);
    close(ends[0]);
    endAndReap(child);
    return end;
}

void HelperProcess::pause(double seconds, const std::stop_token& stop) {
    const StopSignal signal(stop);
    pollfd wait{signal.get(), POLLIN, 0};
    poll(&wait, 1, milliseconds(seconds));
}

}  // namespace vostel
