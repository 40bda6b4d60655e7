#include "app/SignalWatcher.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

namespace vostel {

namespace {

constexpr int watched[] = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> writeEnd = -1;

// Only async-signal-safe calls here (signal-safety(7)).
void onSignal(int number) {
    const char byte = static_cast<char>(number);
    [[maybe_unused]] const ssize_t written = write(writeEnd.load(), &byte, 1);
}

}  // namespace

SignalWatcher::SignalWatcher(QObject* parent) : QObject(parent) {
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;  // the signals keep their default: the program ends, the store was written before
    }
    writeEnd = pipeEnds[1];
    notifier = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, [this] {
        char bytes[16];
        while (read(pipeEnds[0], bytes, sizeof bytes) > 0) {
        }
        Q_EMIT quitRequested();
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int number : watched) {
        sigaction(number, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
}

SignalWatcher::~SignalWatcher() {
    for (const int number : watched) {
        std::signal(number, SIG_DFL);
    }
    notifier.reset();
    for (const int end : pipeEnds) {
        if (end >= 0) {
            close(end);
        }
    }
}

}  // namespace vostel
