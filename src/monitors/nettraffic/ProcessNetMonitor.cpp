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
    worker = std::jthread([this, run](const std::stop_token& token) {
        pthread_setname_np(pthread_self(), "vostel.nettop");
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), utilityNiceness);
        const auto publish = [&](const std::vector<ProcessTraffic>& rates, const QString& sight) {
            std::vector<Named> rows;
            for (const ProcessTraffic& traffic : rates) {
                AppIdentity identity;
                if (parts.identify) {
                    identity = parts.identify(traffic.pid, traffic.name);
                }
                if (identity.name.isEmpty()) {
                    identity.name = plainName(traffic.name);
                }
                rows.push_back({traffic, std::move(identity)});
            }
            QMetaObject::invokeMethod(
                this, [this, run, rows = std::move(rows), sight] { deliver(run, rows, sight); },
                Qt::QueuedConnection);
        };
        while (!token.stop_requested()) {
            const double started = steadySeconds();
            TrafficLines lines(interval);
            const auto end = HelperProcess::run(
                parts.helper, helperArguments(interval), token, [&](std::string_view bytes) {
                    if (const auto rates = lines.feed(bytes)) {
                        publish(*rates, QString::fromStdString(lines.sight()));
                    }
                });
            if (end != HelperProcess::End::stopped) {
                publish({}, QString());
                HelperProcess::pause(parts.restartSeconds - (steadySeconds() - started), token);
            }
        }
    });
}

void ProcessNetMonitor::stop() {
    ++currentRun;
    worker.request_stop();
    if (worker.joinable()) {
        worker.join();
    }
    sightWords.clear();
}

void ProcessNetMonitor::deliver(std::uint64_t run, const std::vector<Named>& rows,
                                const QString& sight) {
    if (run != currentRun) {
        return;
    }
    sightWords = sight;
    if (!onUsage) {
        return;
    }
    std::vector<AppUsage> usage;
    for (const Named& row : rows) {
        const QString& icon = row.identity.icon;
        usage.push_back({row.traffic.pid, row.identity.name,
                         parts.loadIcon && !icon.isEmpty() ? parts.loadIcon(icon) : QIcon(),
                         row.traffic.down, row.traffic.up});
    }
    const Callback callback = onUsage;  // outlives the monitor if that goes in the call
    callback(usage);
}

}  // namespace vostel
