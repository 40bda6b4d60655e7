// vostel-nettop: prints each process's TCP byte counters, block by block, to whoever started it.
//
// A block is
//
//     time,HH:MM:SS.ffffff,bytes_in,bytes_out      local time of the reading
//     # sight=all closed=all namespaces=all        how far it reaches (Sampler::sight)
//     NAME.PID,IN,OUT                              a process: payload bytes so far
//     ...
//     # end
//
// written at once. The clock is the local time at the start plus what CLOCK_BOOTTIME has counted
// since, so that setting the clock changes no difference between two blocks. A process stays for
// ten blocks after its end. IN and OUT never fall while the process lives.
//
// It ends with its parent, and when nobody reads any more.

#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <string_view>
#include <utility>

#include "Options.h"
#include "ReadingBudget.h"
#include "Sampler.h"

namespace {

using namespace vostel::nettop;

double secondsOn(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double secondsOfDay() {
    const double now = secondsOn(CLOCK_REALTIME);
    const auto whole = static_cast<std::time_t>(now);
    std::tm local{};
    localtime_r(&whole, &local);
    return local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec + (now - std::floor(now));
}

bool writeAll(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Sleeps until `time` on CLOCK_BOOTTIME. False as soon as nobody reads the output any more.
bool sleepUntil(double time, pid_t parent) {
    for (;;) {
        const double left = time - secondsOn(CLOCK_BOOTTIME);
        if (getppid() != parent) {
            return false;
        }
        if (left <= 0) {
            return true;
        }
        pollfd output{STDOUT_FILENO, 0, 0};
        if (poll(&output, 1, static_cast<int>(std::ceil(std::min(left, 60.0) * 1000))) > 0) {
            return false;
        }
    }
}

// Prints the blocks. Returns the exit status.
int run(const Options& options, pid_t parent) {
    Sampler sampler("/proc");
    if (!sampler.works()) {
        std::fputs("vostel-nettop: this kernel has no socket diagnostics\n", stderr);
        return 1;
    }
    ReadingBudget budget;
    double used = 0;  // processor seconds up to the end of the last reading
    const auto read = [&] {
        sampler.read(secondsOn(CLOCK_BOOTTIME));
        const double now = secondsOn(CLOCK_BOOTTIME);
        const double before = std::exchange(used, secondsOn(CLOCK_PROCESS_CPUTIME_ID));
        budget.spend(now, used - before);  // with the block before it
        return now;
    };
    const double start = secondsOn(CLOCK_BOOTTIME);
    const double dayAtStart = secondsOfDay();
    double due = start;
    for (long long block = 0; options.blocks == 0 || block < options.blocks; ++block) {
        double extra = secondsOn(CLOCK_BOOTTIME) + budget.pause();
        while (extra < due - ReadingBudget::shortestPause / 2) {
            if (!sleepUntil(extra, parent)) {
                return 0;
            }
            extra = read() + budget.pause();
        }
        if (!sleepUntil(due, parent)) {
            return 0;
        }
        const double now = read();
        if (!writeAll(formatBlock(dayAtStart + (now - start), sampler.sight(), sampler.rows()))) {
            return 0;
        }
        // After a stall or a suspend the grid begins anew: no burst of blocks to catch up.
        due = (now - due > options.interval ? now : due) + options.interval;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const pid_t parent = getppid();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::signal(SIGPIPE, SIG_IGN);
    if (getppid() != parent) {
        return 0;
    }
    const auto parsed = parseOptions({argv + 1, argv + std::max(argc, 1)});
    if (!parsed.error.empty()) {
        std::fprintf(stderr, "vostel-nettop: %s\n", parsed.error.c_str());
        return 2;
    }
    if (parsed.options.help || parsed.options.version) {
        const std::string text =
            parsed.options.help ? helpText() : "vostel-nettop " VOSTEL_VERSION "\n";
        return writeAll(text) ? 0 : 1;
    }
    return run(parsed.options, parent);
}
