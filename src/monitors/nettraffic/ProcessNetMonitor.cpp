#include "monitors/nettraffic/ProcessNetMonitor.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "monitors/nettraffic/HelperProcess.h"
#include "monitors/nettraffic/TrafficLines.h"

namespace vostel {

namespace {

constexpr const char* helperName = "vostel-nettop";
constexpr int utilityNiceness = 5;  // the helper inherits it
constexpr double longestWait = 60;  // seconds from one start to the next

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// The last resort for a name: any bytes as text without control characters.
QString plainName(const std::string& name) {
    QString text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    for (QChar& character : text) {
        if (!character.isPrint() && !character.isSurrogate()) {
            character = QChar::ReplacementCharacter;
        }
    }
    return text.left(64);
}

}  // namespace

struct ProcessNetMonitor::Named {
    ProcessTraffic traffic;
    AppIdentity identity;
};

struct ProcessNetMonitor::Result {
    std::uint64_t run = 0;
    TrafficState state = TrafficState::waiting;
    QString sight;
    std::vector<Named> rows;
};

ProcessNetMonitor::ProcessNetMonitor(double seconds, Parts given, QObject* parent)
    : QObject(parent), interval(seconds), parts(std::move(given)) {}

ProcessNetMonitor::~ProcessNetMonitor() {
    stop();
}

std::vector<std::string> ProcessNetMonitor::helperArguments(double interval) {
    const double whole = std::isfinite(interval) ? std::ceil(interval) : 1;
    return {"-P", "-x", "-J", "bytes_in,bytes_out",
            "-l", "0",  "-s", std::to_string(static_cast<int>(std::clamp(whole, 1.0, 3600.0)))};
}

std::string ProcessNetMonitor::helperBeside(const std::string& programFolder) {
    const std::string beside = programFolder + "/" + helperName;
    for (const std::string& path : {beside, programFolder + "/../libexec/vostel/" + helperName,
                                    programFolder + "/../lib/vostel/" + helperName}) {
        if (access(path.c_str(), X_OK) == 0) {
            return path;
        }
    }
    return beside;
}

void ProcessNetMonitor::start() {
    if (worker.joinable()) {
        return;
    }
    const std::uint64_t run = ++currentRun;
    // The worker is joined in stop(), before anything that it uses goes.
    worker = std::jthread([this, run](const std::stop_token& token) { work(run, token); });
}

void ProcessNetMonitor::work(std::uint64_t run, const std::stop_token& token) {
    pthread_setname_np(pthread_self(), "vostel.nettop");
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), utilityNiceness);
    constexpr double readings = 2;
    const double patience =
        std::max(parts.silenceSeconds, readings * std::max(std::ceil(interval), 1.0));
    double wait = parts.restartSeconds;
    while (!token.stop_requested()) {
        const double started = steadySeconds();
        bool wasLive = false;
        TrafficLines lines(interval);
        const auto end = HelperProcess::run(
            {parts.helper, helperArguments(interval), patience}, token,
            [&](std::string_view bytes) {
                const std::uint64_t before = lines.blocks();
                if (const auto rates = lines.feed(bytes)) {
                    wasLive = true;
                    publish(run, TrafficState::live, QString::fromStdString(lines.sight()), *rates);
                }
                return lines.blocks() > before;
            });
        if (end == HelperProcess::End::stopped) {
            return;
        }
        publish(run,
                end == HelperProcess::End::silent  ? TrafficState::silent
                : end == HelperProcess::End::ended ? TrafficState::ended
                                                   : TrafficState::missing,
                {}, {});
        wait = wasLive ? parts.restartSeconds : wait;
        HelperProcess::pause(wait - (steadySeconds() - started), token);
        wait = std::min(2 * wait, std::max(longestWait, parts.restartSeconds));
    }
}

void ProcessNetMonitor::publish(std::uint64_t run, TrafficState state, const QString& sight,
                                const std::vector<ProcessTraffic>& rates) {
    Result result{run, state, sight, {}};
    for (const ProcessTraffic& traffic : rates) {
        AppIdentity identity;
        if (parts.identify) {
            identity = parts.identify(traffic.pid, traffic.name);
        }
        if (identity.name.isEmpty()) {
            identity.name = plainName(traffic.name);
        }
        result.rows.push_back({traffic, std::move(identity)});
    }
    QMetaObject::invokeMethod(
        this, [this, result = std::move(result)] { deliver(result); }, Qt::QueuedConnection);
}

void ProcessNetMonitor::stop() {
    ++currentRun;
    worker.request_stop();
    if (worker.joinable()) {
        worker.join();
    }
    sightWords.clear();
    helperState = TrafficState::waiting;
}

void ProcessNetMonitor::deliver(const Result& result) {
    if (result.run != currentRun) {
        return;
    }
    sightWords = result.sight;
    helperState = result.state;
    if (!onUsage) {
        return;
    }
    std::vector<AppUsage> usage;
    for (const Named& row : result.rows) {
        const QString& icon = row.identity.icon;
        usage.push_back({row.traffic.pid, row.identity.name,
                         parts.loadIcon && !icon.isEmpty() ? parts.loadIcon(icon) : QIcon(),
                         row.traffic.down, row.traffic.up});
    }
    const Callback callback = onUsage;  // outlives the monitor if that goes in the call
    callback(usage);
}

}  // namespace vostel
