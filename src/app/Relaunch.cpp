#include "app/Relaunch.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include <QCoreApplication>
#include <QFile>

#include "app/updates/InstallLocation.h"

namespace vostel {

namespace {

using namespace std::chrono_literals;

constexpr auto upLimit = 20s;       // for the new process to be up
constexpr auto leavingLimit = 10s;  // for the old one to go

// What the new process finds: a socket to the old one, the lock, and a variable that says so.
constexpr int channelNumber = 3;
constexpr int lockNumber = 4;
constexpr const char* variable = "VOSTEL_HANDOVER";

constexpr char isUp = 'u';
constexpr char takeOver = 't';

std::vector<std::string> listIn(const char* path) {
    QFile file(QString::fromLatin1(path));
    std::vector<std::string> result;
    if (file.open(QFile::ReadOnly)) {
        for (const QByteArray& each : file.readAll().split('\0')) {
            result.push_back(each.toStdString());
        }
        if (!result.empty() && result.back().empty()) {
            result.pop_back();
        }
    }
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// A copy above the numbers that the new process finds things under; closes with `close`.
int moved(int descriptor) {
    return descriptor < 0 ? -1 : fcntl(descriptor, F_DUPFD_CLOEXEC, lockNumber + 1);
}

// Starts one of the programs with the arguments and the environment that this process was started
// with, in a session of its own. 0 or the error of the last one tried.
int spawn(const std::vector<std::string>& programs, int channel, int lock, pid_t* child) {
    std::vector<std::string> arguments = listIn("/proc/self/cmdline");
    std::vector<std::string> environment = listIn("/proc/self/environ");
    const std::string assignment = std::string(variable) + "=";
    std::erase_if(environment,
                  [&](const std::string& each) { return each.starts_with(assignment); });
    environment.push_back(assignment + "1");

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
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSID);
    posix_spawn_file_actions_adddup2(&actions, channel, channelNumber);
    if (lock >= 0) {
        posix_spawn_file_actions_adddup2(&actions, lock, lockNumber);
    }
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 34)
    // A library that opened a file without close-on-exec must not hand it on.
    posix_spawn_file_actions_addclosefrom_np(&actions,
                                             lock >= 0 ? lockNumber + 1 : channelNumber + 1);
#endif
    int error = arguments.empty() ? ENOENT : 0;
    for (const std::string& program : programs) {
        error = posix_spawn(child, program.c_str(), &actions, &attributes,
                            pointersTo(arguments).data(), pointersTo(environment).data());
        if (error == 0) {
            break;
        }
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

}  // namespace

std::vector<std::string> programsToStart() {
    std::vector<std::string> programs;
    if (const QString image = programFile(); image != QCoreApplication::applicationFilePath()) {
        programs.push_back(QFile::encodeName(image).toStdString());
    }
    // Of a file that was replaced, as by an update, the link says so after the name (proc(5)).
    const std::string running = "/proc/self/exe";
    std::string file(4096, '\0');
    const ssize_t length = readlink(running.c_str(), file.data(), file.size());
    file.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    const std::string gone = " (deleted)";
    if (file.ends_with(gone)) {
        file.resize(file.size() - gone.size());
    }
    if (!file.empty()) {
        programs.push_back(file);
    }
    programs.push_back(running);
    return programs;
}

Relaunch::Relaunch(std::vector<std::string> candidates, QObject* parent)
    : QObject(parent), programs(std::move(candidates)) {
    limit.setSingleShot(true);
    limit.setInterval(upLimit);
    connect(&limit, &QTimer::timeout, this,
            [this] { finish(QStringLiteral("The new process does not answer.")); });
}

// An end before the new process was told to take over ends that, too.
Relaunch::~Relaunch() {
    notifier.reset();
    if (channel >= 0) {
        close(channel);
    }
}

void Relaunch::start(int lock, Done whenDone) {
    done = std::move(whenDone);
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        finish(QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    channel = ends[0];
    const int theirs = moved(ends[1]);
    const int theirLock = moved(lock);
    close(ends[1]);
    const int error = spawn(programs, theirs, theirLock, &child);
    for (const int descriptor : {theirs, theirLock}) {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
    if (error != 0) {
        child = -1;
        finish(QString::fromLocal8Bit(std::strerror(error)));
        return;
    }
    notifier = std::make_unique<QSocketNotifier>(channel, QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, &Relaunch::heard);
    limit.start();
}

void Relaunch::heard() {
    char byte = 0;
    const ssize_t n = recv(channel, &byte, 1, MSG_DONTWAIT);
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (n == 1 && byte == isUp && send(channel, &takeOver, 1, MSG_NOSIGNAL) == 1) {
        finish(std::nullopt);
    } else {
        finish(QStringLiteral("The new process ended at once."));
    }
}

void Relaunch::finish(const std::optional<QString>& error) {
    limit.stop();
    if (notifier) {
        notifier->setEnabled(false);
    }
    if (error && child > 0) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        child = -1;
    }
    if (error && channel >= 0) {
        close(channel);
        channel = -1;
    }
    if (const Done report = std::exchange(done, nullptr)) {
        report(error);
    }
}

Handover::Handover() {
    if (!qEnvironmentVariableIsSet(variable)) {
        return;
    }
    qunsetenv(variable);
    struct stat status{};
    if (fstat(channelNumber, &status) != 0 || !S_ISSOCK(status.st_mode)) {
        return;
    }
    channel = channelNumber;
    fcntl(channel, F_SETFD, FD_CLOEXEC);
    if (fstat(lockNumber, &status) == 0 && S_ISREG(status.st_mode)) {
        lock = lockNumber;
        fcntl(lock, F_SETFD, FD_CLOEXEC);
    }
}

Handover::~Handover() {
    for (const int descriptor : {channel, lock}) {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
}

int Handover::takeLock() {
    return std::exchange(lock, -1);
}

bool Handover::complete() {
    if (channel < 0) {
        return true;
    }
    if (send(channel, &isUp, 1, MSG_NOSIGNAL) != 1) {
        return false;
    }
    bool wanted = false;
    const auto deadline = std::chrono::steady_clock::now() + upLimit;
    auto last = deadline;
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(last - std::chrono::steady_clock::now());
        pollfd waiting{channel, POLLIN, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(std::max<long long>(left.count(), 0)));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        char byte = 0;
        if (ready <= 0 || recv(channel, &byte, 1, MSG_DONTWAIT) != 1) {
            return wanted;  // it is gone, or takes too long
        }
        if (byte == takeOver) {
            wanted = true;
            last = std::chrono::steady_clock::now() + leavingLimit;
        }
    }
}

}  // namespace vostel
