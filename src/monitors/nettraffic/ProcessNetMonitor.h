#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <QIcon>
#include <QObject>
#include <QString>

#include "monitors/nettraffic/AppUsage.h"
#include "monitors/nettraffic/TrafficState.h"

namespace vostel {

struct ProcessTraffic;

// Who a process is to a person.
struct AppIdentity {
    QString name;
    QString icon;  // what loadIcon takes; empty: none
};

// Runs the traffic helper while it is started, and delivers the download and upload rates of the
// ten busiest processes after each of the helper's readings.
//
// The helper's output is read and parsed, and processes are named, on a thread of this monitor,
// because naming reads files of processes and of desktop entries; results arrive on the thread
// that made the monitor (the main thread), and none arrives once stop() was called or the monitor
// is gone. A helper that ends, cannot be started, or gives no complete reading for ten seconds (it
// is killed then) yields an empty list. It is started again five seconds after its last start at
// the earliest; each further failure without rates in between doubles that, up to a minute.
class ProcessNetMonitor : public QObject {
    Q_OBJECT

  public:
    struct Parts {
        std::string helper;  // path of the program; see helperBeside
        // On the monitor's thread: names a process. `comm` is the helper's name for it.
        std::function<AppIdentity(int pid, const std::string& comm)> identify;
        // On the main thread: the icon of AppIdentity::icon.
        std::function<QIcon(const QString&)> loadIcon;
        double restartSeconds = 5;
        double silenceSeconds = 10;  // or two of the helper's readings, if that is longer
    };
    using Callback = std::function<void(const std::vector<AppUsage>&)>;

    // `interval`: seconds between results; the helper rounds it up to whole seconds.
    ProcessNetMonitor(double interval, Parts parts, QObject* parent = nullptr);
    ~ProcessNetMonitor() override;

    // What receives the results. `onUsage` may destroy the monitor.
    Callback onUsage;

    void start();  // does nothing when started

    // Ends and reaps the helper and drops what was read. Waits only for a killed process to go.
    void stop();

    // How far the helper sees, in words "key=value" (helpers/nettop/Sampler.h), empty until it has
    // said so. "sight=own": the processes of this user alone.
    QString sight() const { return sightWords; }

    // How the helper does, as of the latest result.
    TrafficState state() const { return helperState; }

    // Where the helper lies: beside the program in the build tree, else in libexec/vostel of the
    // installation that the program's folder belongs to, else beside it all the same.
    static std::string helperBeside(const std::string& programFolder);

    // The helper's arguments for readings so many seconds apart.
    static std::vector<std::string> helperArguments(double interval);

  private:
    struct Named;
    struct Result;
    void work(std::uint64_t run, const std::stop_token& token);
    void publish(std::uint64_t run, TrafficState state, const QString& sight,
                 const std::vector<ProcessTraffic>& rates);
    void deliver(const Result& result);

    double interval;
    Parts parts;
    QString sightWords;
    TrafficState helperState = TrafficState::waiting;
    std::uint64_t currentRun = 0;  // results of earlier runs are dropped
    std::jthread worker;
};

}  // namespace vostel
