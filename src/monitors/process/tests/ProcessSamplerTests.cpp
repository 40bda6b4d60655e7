#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include "monitors/process/ProcessRates.h"
#include "monitors/process/ProcessSampler.h"
#include "monitors/process/PsOutput.h"
#include "platform/Platform.h"

namespace vostel {
namespace {

TEST(PsOutputTest, LinesGoodAndBad) {
    const std::string text =
        "    1  0.3  17640 /sbin/init splash\n"
        "\n"
        " 4194304 250.5 1048576   /opt/My  Folder/my  program --flag=a  b\n"
        "5 1.0 10\n"
        "6 1.0 10   \n"
        "x 1.0 10 a\n"
        "7 1,0 10 a\n"
        "8 nan 10 a\n"
        "9 1.0 10k a\n"
        "99999999999 1.0 10 a\n"
        "10 0.0 0 [kthreadd]";
    const auto entries = parsePsOutput(text);
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].name, "init");
    EXPECT_DOUBLE_EQ(entries[1].cpu, 250.5);
    EXPECT_DOUBLE_EQ(entries[1].rss, 1048576);
    EXPECT_EQ(entries[1].name, "my program");
    EXPECT_EQ(entries[2].name, "kthreadd");
    EXPECT_TRUE(parsePsOutput("1 0.3 17640 /sbin/init\n2 0 0 \xff\n").empty());
    EXPECT_EQ(topEntries(entries, ProcMetric::memory, 2)[0].pid, 4194304);
    EXPECT_EQ(topEntries(entries, ProcMetric::memory, -1).size(), 0u);
}

ProcessRecord record(int pid, double start, double cpu, std::uint64_t bytes = 0) {
    return {.pid = pid, .startSeconds = start, .cpuSeconds = cpu, .residentBytes = bytes};
}

double rateOf(const ProcessRates& rates, int pid) {
    for (const ProcEntry& entry : rates.entries()) {
        if (entry.pid == pid) {
            return entry.cpu;
        }
    }
    return -1;
}

TEST(ProcessRatesTest, TimeUsedBetweenTwoReadings) {
    ProcessRates rates;
    EXPECT_FALSE(rates.update({record(1, 5, 100), record(2, 6, 7), record(4, 8, 900)}, 1000));
    EXPECT_FALSE(rates.update({record(1, 5, 100)}, 1000.1)) << "nothing to show yet";
    ASSERT_TRUE(rates.update({record(1, 5, 103),     // three processors' worth of half a second
                              record(2, 1001, 0.5),  // the pid of another process
                              record(3, 1001, 1),    // new
                              record(4, 8, 899),     // a counter that ran backwards
                              record(5, 20, 5000)},  // old, but not visible before
                             1002));
    EXPECT_DOUBLE_EQ(rateOf(rates, 1), 150);
    EXPECT_DOUBLE_EQ(rateOf(rates, 2), 25);
    EXPECT_DOUBLE_EQ(rateOf(rates, 3), 50);
    EXPECT_DOUBLE_EQ(rateOf(rates, 4), 0);
    EXPECT_DOUBLE_EQ(rateOf(rates, 5), 0);
    // A second caller right after keeps the figures, and the interval of the first one.
    ASSERT_TRUE(rates.update({record(1, 5, 103.01)}, 1002.05));
    EXPECT_DOUBLE_EQ(rateOf(rates, 1), 150);
    ASSERT_TRUE(rates.update({record(1, 5, 104)}, 1004));
    EXPECT_DOUBLE_EQ(rateOf(rates, 1), 50);
    // After a pause, and after a clock that went back, it begins anew.
    EXPECT_FALSE(rates.update({record(1, 5, 200)}, 1004 + ProcessRates::longestInterval + 1));
    EXPECT_FALSE(rates.update({record(1, 5, 200)}, 900));
    ASSERT_TRUE(rates.update({record(1, 5, 201)}, 901));
    EXPECT_DOUBLE_EQ(rateOf(rates, 1), 100);
}

// A list of two processes; each reading is half a second later and process 10 has used a quarter.
class FakeProcesses : public ProcessSource, public Clock {
  public:
    double seconds() const override { return now; }
    std::chrono::system_clock::time_point calendar() const override { return {}; }
    bool read(std::vector<ProcessRecord>& records) override {
        EXPECT_FALSE(busy.exchange(true)) << "two threads in one source";
        now = now + 0.5;
        used += 0.25;
        records = {record(10, 1, used, 1 << 20), record(20, 2, 3, 5 << 20)};
        records[1].comm = "big";
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        busy = false;
        return readable;
    }
    std::optional<ProcessDetails> details(std::int32_t pid, double) override {
        EXPECT_FALSE(busy.exchange(true)) << "two threads in one source";
        busy = false;
        if (pid == 10) {
            return ProcessDetails{{"python3", "-m", "http.server"}, "/usr/bin/python3", ""};
        }
        return std::nullopt;  // has ended since
    }

    std::atomic<bool> readable = true;

  private:
    std::atomic<bool> busy = false;
    std::atomic<double> now = 100;
    double used = 0;
};

class ProcessSamplerTest : public testing::Test {
  protected:
    void waitFor(const std::function<bool()>& condition) {
        QElapsedTimer timer;
        timer.start();
        while (!condition() && timer.elapsed() < 30'000) {
            QCoreApplication::processEvents();
            QThread::msleep(1);
        }
        ASSERT_TRUE(condition());
    }
    QList<ProcStat> top(ProcessSampler& sampler, ProcMetric metric, int limit) {
        std::optional<QList<ProcStat>> result;
        sampler.top(metric, limit, &owner, [&result](QList<ProcStat> list) {
            EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
            result = std::move(list);
        });
        waitFor([&] { return result.has_value(); });
        return result.value_or(QList<ProcStat>());
    }

    QObject owner;
    FakeProcesses fake;
    AppIcons icons{SystemRoots()};
    Background background;
};

TEST_F(ProcessSamplerTest, FirstListIsFilledAtOnce) {
    ProcessSampler sampler(background, fake, fake, icons);
    const auto cpu = top(sampler, ProcMetric::cpu, 8);
    ASSERT_EQ(cpu.size(), 2);
    EXPECT_EQ(cpu[0].name, QStringLiteral("http.server (python)"));
    EXPECT_DOUBLE_EQ(cpu[0].value, 50);
    const auto memory = top(sampler, ProcMetric::memory, 1);
    ASSERT_EQ(memory.size(), 1);
    EXPECT_EQ(memory[0].name, QStringLiteral("big"));  // ended: the kernel's name is left
    EXPECT_DOUBLE_EQ(memory[0].value, 5 << 20);
}

TEST_F(ProcessSamplerTest, TwoCallersAndOneThatIsGone) {
    ProcessSampler sampler(background, fake, fake, icons);
    auto lost = std::make_unique<QObject>();
    int answers = 0;
    sampler.top(ProcMetric::cpu, 8, lost.get(), [](auto) { ADD_FAILURE() << "owner is gone"; });
    for (int i = 0; i < 20; ++i) {
        sampler.top(i % 2 == 0 ? ProcMetric::cpu : ProcMetric::memory, 8, &owner,
                    [&answers, i](const QList<ProcStat>& list) {
                        ++answers;
                        ASSERT_EQ(list.size(), 2);
                        EXPECT_EQ(list[0].id, i % 2 == 0 ? 10 : 20);
                        if (i % 2 == 0) {
                            EXPECT_GT(list[0].value, 0);
                        }
                    });
    }
    lost.reset();
    waitFor([&] { return answers == 20; });
}

TEST_F(ProcessSamplerTest, PsOnRequestAndAsFallback) {
    ProcessSampler sampler(background, fake, fake, icons);
    const auto holdsThisProcess = [](const QList<ProcStat>& list) {
        return std::any_of(list.begin(), list.end(), [](const ProcStat& stat) {
            return stat.id == getpid() && stat.name == QStringLiteral("process_tests") &&
                   stat.value > 1 << 20;
        });
    };
    EXPECT_FALSE(holdsThisProcess(top(sampler, ProcMetric::memory, 100000)));
    fake.readable = false;
    EXPECT_TRUE(holdsThisProcess(top(sampler, ProcMetric::memory, 100000)));
    fake.readable = true;
    sampler.setSource(ProcessSampler::Source::ps);
    EXPECT_TRUE(holdsThisProcess(top(sampler, ProcMetric::memory, 100000)));
}

// Against the machine: a thread of this process that does nothing but count.
TEST_F(ProcessSamplerTest, ABusyThreadIsSeen) {
    Platform platform = makeLinuxPlatform(SystemRoots::ofThisMachine());
    ProcessSampler sampler(background, *platform.processes, *platform.clock, icons);
    std::jthread busy([](std::stop_token stop) {
        for (volatile unsigned i = 0; !stop.stop_requested();) {
            i = i + 1;
        }
    });
    for (const ProcStat& stat : top(sampler, ProcMetric::cpu, 100000)) {
        if (stat.id == getpid()) {
            EXPECT_GT(stat.value, 5);  // a loaded machine leaves it less than a processor
            return;
        }
    }
    FAIL() << "not in the list";
}

}  // namespace
}  // namespace vostel
