#include "app/SignalWatcher.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <utility>

namespace vostel {

namespace {

constexpr int watched[] = {SIGTERM, SIGINT, SIGHUP};

constexpr int saveAfter = 400;  // ms after the signal, where the main thread has not ended
constexpr int endAfter = 800;   // ms; what the kernel needs to clear up comes on top
constexpr unsigned watcherStack = 256 * 1024;
constexpr char noMore = 0;  // in place of a signal's number

std::atomic<int> writeEnd = -1;

// Only async-signal-safe calls here (signal-safety(7)).
void onSignal(int number) {
    endWithinASecond();
    const char byte = static_cast<char>(number);
    [[maybe_unused]] const ssize_t written = write(writeEnd.load(), &byte, 1);
}

}  // namespace

SignalWatcher::SignalWatcher(std::function<void()> keep, QObject* parent)
    : QObject(parent), save(std::move(keep)) {
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;  // the signals keep their default: the program ends, the store was written before
    }
    writeEnd = pipeEnds[1];
    watcher.reset(QThread::create([this] { watch(); }));
    watcher->setStackSize(watcherStack);
    watcher->start();
    struct sigaction action{};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int number : watched) {
        sigaction(number, &action, nullptr);
    }
}

// On a thread of its own, because the main thread may hang when the signal comes.
void SignalWatcher::watch() const {
    pollfd readable{pipeEnds[0], POLLIN, 0};
    int limit = -1;
    for (;;) {
        const int ready = poll(&readable, 1, limit);
        if (ready == 0) {
            save();
            return;
        }
        char byte = noMore;
        if (ready < 0 || read(pipeEnds[0], &byte, 1) != 1) {
            continue;
        }
        if (byte == noMore) {
            return;
        }
        Q_EMIT const_cast<SignalWatcher*>(this)->quitRequested();
        limit = saveAfter;
    }
}

SignalWatcher::~SignalWatcher() {
    for (const int number : watched) {
        std::signal(number, SIG_DFL);
    }
    if (watcher) {
        [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &noMore, 1);
        watcher->wait();
    }
    for (const int end : pipeEnds) {
        if (end >= 0) {
            close(end);
        }
    }
}

void endWithinASecond() {
    static std::atomic<bool> isArmed = false;
    if (!isArmed.exchange(true)) {
        std::signal(SIGALRM, [](int) { _exit(0); });
        const itimerval due{{}, {0, endAfter * 1000}};
        setitimer(ITIMER_REAL, &due, nullptr);
    }
}

}  // namespace vostel
