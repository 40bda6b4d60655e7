// What a snapshot of 500 processes costs: the native reader against a run of ps. All times are
// processor time of this process and of the children it waits for.

#include <benchmark/benchmark.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "monitors/process/FriendlyName.h"
#include "monitors/process/ProcessRates.h"
#include "monitors/process/PsOutput.h"
#include "platform/Subprocess.h"
#include "platform/linux/ProcProcessSource.h"

namespace {

using namespace vostel;

constexpr std::size_t wantedProcesses = 500;

// Fills the machine up to 500 processes with sleepers, and ends them.
class Sleepers {
  public:
    Sleepers() {
        ProcProcessSource source(SystemRoots::ofThisMachine());
        std::vector<ProcessRecord> records;
        source.read(records);
        for (std::size_t count = records.size(); count < wantedProcesses; ++count) {
            const pid_t pid = fork();
            if (pid == 0) {
                execl("/bin/sleep", "sleep", "100000", nullptr);
                _exit(127);
            }
            pids.push_back(pid);
        }
        usleep(300'000);  // until all of them are asleep
    }
    ~Sleepers() {
        for (pid_t pid : pids) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }

  private:
    std::vector<pid_t> pids;
};

double processorSeconds() {
    double seconds = 0;
    for (int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        for (const timeval& time : {usage.ru_utime, usage.ru_stime}) {
            seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
        }
    }
    return seconds;
}

template <typename Work>
void measure(benchmark::State& state, Work work) {
    std::size_t processes = 0;
    for (auto _ : state) {
        const double before = processorSeconds();
        processes = work();
        state.SetIterationTime(processorSeconds() - before);
    }
    state.counters["processes"] = static_cast<double>(processes);
}

void nativeSnapshot(benchmark::State& state) {
    ProcProcessSource source(SystemRoots::ofThisMachine());
    std::vector<ProcessRecord> records;
    ProcessRates rates;
    double now = 0;
    measure(state, [&] {
        now += 2;
        source.read(records);
        rates.update(records, now);
        for (const ProcEntry& entry : topEntries(rates.entries(), ProcMetric::cpu, 8)) {
            if (const auto details = source.details(entry.pid, entry.startSeconds)) {
                benchmark::DoNotOptimize(friendlyName(details->arguments, ""));
            }
        }
        return records.size();
    });
}
BENCHMARK(nativeSnapshot)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(300);

void psSnapshot(benchmark::State& state) {
    measure(state, [] {
        const auto text = Subprocess::run("/bin/ps", {"-A", "-o", "pid=,pcpu=,rss=,command="}, 3.0);
        const auto entries = parsePsOutput(text.value_or(""));
        benchmark::DoNotOptimize(topEntries(entries, ProcMetric::cpu, 8));
        return entries.size();
    });
}
BENCHMARK(psSnapshot)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(30);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const Sleepers sleepers;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
