#include "monitors/process/ProcessSampler.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "monitors/process/FriendlyName.h"
#include "monitors/process/ProcessRates.h"
#include "monitors/process/PsOutput.h"
#include "platform/Subprocess.h"

namespace vostel {

namespace {

constexpr double psTimeout = 3.0;  // seconds
constexpr auto secondReading = std::chrono::milliseconds(400);

struct Row {
    ProcEntry entry;
    AppIconName icon;
};

}  // namespace

// What the workers share; lives on until the last of them is done.
struct ProcessSampler::State {
    ProcessSource& processes;
    const Clock& clock;
    AppIcons& icons;
    std::atomic<Source> source = Source::native;

    std::mutex lock;  // guards `processes` and what follows
    std::vector<ProcessRecord> records;
    ProcessRates rates;

    State(ProcessSource& list, const Clock& time, AppIcons& appIcons)
        : processes(list), clock(time), icons(appIcons) {}

    enum class Reading { done, again, unreadable };

    // One look at the native list.
    Reading read(ProcMetric metric, int limit, std::vector<ProcEntry>& top) {
        const std::lock_guard guard(lock);
        const double now = clock.seconds();
        if (!processes.read(records)) {
            return Reading::unreadable;
        }
        if (metric == ProcMetric::memory) {
            top = topEntries(ProcessRates::withoutRates(records), metric, limit);
        } else if (rates.update(records, now)) {
            top = topEntries(rates.entries(), metric, limit);
        } else {
            return Reading::again;
        }
        for (ProcEntry& entry : top) {
            entry.name = commOf(entry.pid);
        }
        return Reading::done;
    }

    // False when there is no list to read. The lock is free while this sleeps.
    bool readNative(ProcMetric metric, int limit, std::vector<ProcEntry>& top) {
        Reading reading = read(metric, limit, top);
        if (reading == Reading::again) {
            std::this_thread::sleep_for(secondReading);
            reading = read(metric, limit, top);
        }
        return reading != Reading::unreadable;
    }

    static std::vector<ProcEntry> readPs(ProcMetric metric, int limit) {
        const auto text =
            Subprocess::run("/bin/ps", {"-A", "-o", "pid=,pcpu=,rss=,command="}, psTimeout);
        return text ? topEntries(parsePsOutput(*text), metric, limit) : std::vector<ProcEntry>();
    }

    std::string commOf(std::int32_t pid) const {
        const auto record =
            std::lower_bound(records.begin(), records.end(), pid,
                             [](const ProcessRecord& r, std::int32_t id) { return r.pid < id; });
        return record != records.end() && record->pid == pid ? record->comm : std::string();
    }

    // Names and icons, for the rows that are shown only. `named`: they have their names already.
    std::vector<Row> describe(std::vector<ProcEntry> top, bool named) {
        std::vector<Row> rows;
        for (ProcEntry& entry : top) {
            std::optional<ProcessDetails> details;
            {
                const std::lock_guard guard(lock);
                details = processes.details(entry.pid, entry.startSeconds);
            }
            if (!named) {
                entry.name = friendlyName(details.value_or(ProcessDetails()), entry.name);
            }
            rows.push_back({std::move(entry), details ? icons.iconName(*details) : AppIconName()});
        }
        return rows;
    }

    std::vector<Row> sample(ProcMetric metric, int limit) {
        std::vector<ProcEntry> top;
        const bool ps = source == Source::ps || !readNative(metric, limit, top);
        if (ps) {
            top = readPs(metric, limit);
        }
        return describe(std::move(top), ps);  // ps tells the whole command
    }
};

ProcessSampler::ProcessSampler(Background& worker, ProcessSource& processes, const Clock& clock,
                               AppIcons& appIcons, QObject* parent)
    : QObject(parent),
      background(worker),
      icons(appIcons),
      state(std::make_shared<State>(processes, clock, appIcons)) {}

ProcessSampler::~ProcessSampler() = default;

void ProcessSampler::setSource(Source source) {
    state->source = source;
}

void ProcessSampler::top(ProcMetric metric, int limit, QObject* owner, Completion completion) {
    background.run(
        owner, [shared = state, metric, limit] { return shared->sample(metric, limit); },
        [&appIcons = icons, metric, completion = std::move(completion)](std::vector<Row> rows) {
            QList<ProcStat> list;
            for (const Row& row : rows) {
                constexpr double bytesPerKiB = 1024;
                list.append(
                    {row.entry.pid, QString::fromStdString(row.entry.name), appIcons.icon(row.icon),
                     metric == ProcMetric::cpu ? row.entry.cpu : row.entry.rss * bytesPerKiB});
            }
            completion(std::move(list));
        });
}

void ProcessSampler::describe(const QList<ProcStat>& rows, QObject* owner, Completion completion) {
    std::vector<ProcEntry> entries;
    for (const ProcStat& row : rows) {
        entries.push_back({.pid = row.id, .name = row.name.toStdString()});
    }
    background.run(
        owner,
        [shared = state, entries = std::move(entries)]() mutable {
            return shared->describe(std::move(entries), false);
        },
        [&appIcons = icons, rows,
         completion = std::move(completion)](const std::vector<Row>& described) {
            QList<ProcStat> list = rows;
            for (qsizetype i = 0; i < list.size(); ++i) {
                const Row& row = described[static_cast<std::size_t>(i)];
                list[i].name = QString::fromStdString(row.entry.name);
                list[i].icon = appIcons.icon(row.icon);
            }
            completion(std::move(list));
        });
}

}  // namespace vostel
