#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <iterator>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTemporaryDir>

#include "monitors/nettraffic/ProcessNetMonitor.h"

namespace vostel {
namespace {

// A folder with a stand-in for the helper, a shell script.
class ProcessNetMonitorTest : public testing::Test {
  protected:
    std::string script(const std::string& body) {
        const std::string path = folder.filePath(QStringLiteral("helper")).toStdString();
        std::ofstream(path) << "#!/bin/sh\n" << body;
        chmod(path.c_str(), 0755);
        return path;
    }
    std::string file(const char* name) {
        return folder.filePath(QString::fromLatin1(name)).toStdString();
    }
    static std::string content(const std::string& path) {
        std::ifstream stream(path);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    template <typename Condition>
    static bool waitFor(const Condition& condition, int milliseconds = 20'000) {
        const QDeadlineTimer deadline(milliseconds);
        while (!condition() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
            usleep(2000);
        }
        return condition();
    }
    std::unique_ptr<ProcessNetMonitor> monitor(ProcessNetMonitor::Parts parts,
                                               double interval = 1) {
        auto made = std::make_unique<ProcessNetMonitor>(interval, std::move(parts));
        made->onUsage = [this](const std::vector<AppUsage>& usage) { results.push_back(usage); };
        return made;
    }
    QTemporaryDir folder;
    std::vector<std::vector<AppUsage>> results;
};

constexpr const char* twoBlocks =
    "printf 'time,10:00:00.0,bytes_in,bytes_out\\n# sight=own closed=none\\ncurl.7,0,0\\n"
    "\\377\\001x.8,0,0\\n# end\\n'\n"
    "printf 'time,10:00:01.0,bytes_in,bytes_out\\ncurl.7,500,20\\n\\377\\001x.8,9,0\\n# end\\n'\n";

TEST_F(ProcessNetMonitorTest, DeliversNamedRatesOnTheOwnersThread) {
    ProcessNetMonitor::Parts parts;
    parts.helper =
        script("echo \"$@\" > " + file("arguments") + "\n" + twoBlocks + "exec sleep 100\n");
    const auto owner = std::this_thread::get_id();
    std::thread::id namer;
    std::thread::id painter;
    parts.identify = [&](int pid, const std::string& comm) {
        namer = std::this_thread::get_id();
        return pid == 7 ? AppIdentity{QString::fromStdString("nice " + comm), QStringLiteral("i")}
                        : AppIdentity{};
    };
    parts.loadIcon = [&](const QString&) {
        painter = std::this_thread::get_id();
        return QIcon(QPixmap(4, 4));
    };
    const auto made = monitor(parts, 0.1);
    made->start();
    ASSERT_TRUE(waitFor([&] { return !results.empty(); }));
    ASSERT_EQ(results[0].size(), 2u);
    EXPECT_EQ(results[0][0].name, QStringLiteral("nice curl"));
    EXPECT_FALSE(results[0][0].icon.isNull());
    EXPECT_DOUBLE_EQ(results[0][0].down, 500);
    EXPECT_DOUBLE_EQ(results[0][0].up, 20);
    EXPECT_EQ(results[0][1].name, QStringLiteral("\uFFFD\uFFFDx")) << "bytes that are no text";
    EXPECT_NE(namer, owner) << "naming reads files and must not hold up the owner";
    EXPECT_EQ(painter, owner);
    EXPECT_EQ(made->sight(), QStringLiteral("sight=own closed=none"));
    EXPECT_EQ(made->state(), TrafficState::live);
    EXPECT_EQ(content(file("arguments")), "-P -x -J bytes_in,bytes_out -l 0 -s 1\n");
}

TEST_F(ProcessNetMonitorTest, RestartsADyingHelperAfterAWaitAndYieldsEmptyLists) {
    ProcessNetMonitor::Parts parts;
    parts.helper = script("echo x >> " + file("starts") + "\n");
    parts.restartSeconds = 0.5;
    auto made = monitor(parts);
    const auto before = std::chrono::steady_clock::now();
    made->start();
    made->start();  // one helper, however often
    ASSERT_TRUE(waitFor([&] { return content(file("starts")).size() >= 6; }));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
    EXPECT_GE(took.count(), 1.0) << "three starts are two waits apart";
    EXPECT_TRUE(waitFor([&] { return results.size() >= 2; }));
    EXPECT_TRUE(results[0].empty());

    parts.helper = file("nothing-here");
    results.clear();
    made = monitor(parts);
    made->start();
    EXPECT_TRUE(waitFor([&] { return results.size() >= 2; })) << "cannot be started: tried again";
    EXPECT_EQ(made->state(), TrafficState::missing);
}

// Each hangs in its way: it is noticed and killed, and another one is started.
TEST_F(ProcessNetMonitorTest, ReplacesAHelperThatHangs) {
    const std::string live = std::string(twoBlocks);
    const struct {
        const char* fault;
        std::string body;
        TrafficState before;  // the first result
    } rows[] = {
        {"prints nothing", "exec sleep 600\n", TrafficState::silent},
        {"half a line", "printf 'time,10:00'\nexec sleep 600\n", TrafficState::silent},
        {"a block without an end", "printf 'time,10:00:00,\\na.1,1,1\\n'\nexec sleep 600\n",
         TrafficState::silent},
        {"writes on, and never a block", "while :; do echo x; sleep 0.05; done\n",
         TrafficState::silent},
        {"stops itself, as a debugger would", live + "kill -STOP $$\n", TrafficState::live},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        unlink(file("pids").c_str());
        ProcessNetMonitor::Parts parts;
        // The first one hangs, the next one works.
        parts.helper = script("echo $$ >> " + file("pids") + "\nif [ $(wc -l < " + file("pids") +
                              ") = 1 ]; then\n" + row.body + "fi\n" + live + "exec sleep 600\n");
        parts.silenceSeconds = 2.5;
        parts.restartSeconds = 0.2;
        results.clear();
        std::vector<TrafficState> states;
        const auto made = monitor(parts);
        made->onUsage = [&](const std::vector<AppUsage>& usage) {
            results.push_back(usage);
            states.push_back(made->state());
        };
        EXPECT_EQ(made->state(), TrafficState::waiting);
        made->start();
        ASSERT_TRUE(waitFor([&] { return !states.empty(); }));
        EXPECT_EQ(states[0], row.before);
        ASSERT_TRUE(
            waitFor([&] { return states.size() > 1 && states.back() == TrafficState::live; }));
        EXPECT_EQ(states.end()[-2], TrafficState::silent);
        EXPECT_TRUE(results.end()[-2].empty()) << "rates of a helper that hangs stay";
        EXPECT_EQ(results.back().size(), 2u);
        const int hung = std::stoi(content(file("pids")));
        EXPECT_EQ(kill(hung, 0), -1) << "alive, or a zombie";
        made->stop();
        EXPECT_EQ(made->state(), TrafficState::waiting);
    }
}

TEST_F(ProcessNetMonitorTest, WaitsLongerAfterEachFailureAndNotAtAllAfterALongLife) {
    ProcessNetMonitor::Parts parts;
    const std::string note = "date +%s.%N >> " + file("starts") + "\n";
    const auto starts = [&] {
        std::ifstream stream(file("starts"));
        return std::vector<double>{std::istream_iterator<double>(stream), {}};
    };
    parts.helper = script(note);
    parts.restartSeconds = 0.3;
    auto made = monitor(parts);
    made->start();
    ASSERT_TRUE(waitFor([&] { return starts().size() >= 4; }));
    EXPECT_EQ(made->state(), TrafficState::ended);
    made->stop();
    const std::vector<double> at = starts();
    constexpr double early = 0.1;  // what starting a shell may take, more or less
    EXPECT_GT(at[1] - at[0], 0.3 - early);
    EXPECT_GT(at[2] - at[1], 0.6 - early);
    EXPECT_GT(at[3] - at[2], 1.2 - early);

    unlink(file("starts").c_str());
    parts.helper = script(note + "sleep 0.5\n");  // outlives the wait
    made = monitor(parts);
    made->start();
    EXPECT_TRUE(waitFor([&] { return starts().size() >= 2; })) << "never started again";
}

TEST_F(ProcessNetMonitorTest, StopEndsAndReapsWhateverTheHelperDoes) {
    const struct {
        const char* fault;
        const char* body;
    } rows[] = {
        {"a helper that prints nothing and ignores signals",
         "trap '' TERM INT HUP\nexec sleep 600"},
        {"a helper that floods", "exec yes garbage"},
        {"a line without an end", "exec cat /dev/zero"},
    };
    for (const auto& row : rows) {
        ProcessNetMonitor::Parts parts;
        parts.helper = script("echo $$ > " + file("pid") + ".new; mv " + file("pid") + ".new " +
                              file("pid") + "\n" + row.body + "\n");
        const auto made = monitor(parts);
        for (int round = 0; round < 3; ++round) {
            unlink(file("pid").c_str());
            made->start();
            ASSERT_TRUE(waitFor([&] { return !content(file("pid")).empty(); })) << row.fault;
            const int pid = std::stoi(content(file("pid")));
            usleep(30'000);
            made->stop();
            EXPECT_EQ(kill(pid, 0), -1) << row.fault << ": alive, or a zombie";
        }
        results.clear();
        waitFor([] { return false; }, 50);
        EXPECT_TRUE(results.empty()) << row.fault << ": a result after stop()";
    }
}

TEST_F(ProcessNetMonitorTest, TheCallbackMayDestroyTheMonitor) {
    ProcessNetMonitor::Parts parts;
    parts.helper = script(std::string(twoBlocks) + "exec sleep 100\n");
    auto made = monitor(parts);
    bool called = false;
    made->onUsage = [&](const std::vector<AppUsage>&) {
        made.reset();
        called = true;
    };
    made->start();
    EXPECT_TRUE(waitFor([&] { return called; }));
    EXPECT_EQ(made, nullptr);
}

TEST_F(ProcessNetMonitorTest, HelperArgumentsRoundUp) {
    for (const auto& [interval, seconds] :
         {std::pair(0.1, "1"), {1.0, "1"}, {1.2, "2"}, {-5.0, "1"}, {1e9, "3600"}}) {
        EXPECT_EQ(ProcessNetMonitor::helperArguments(interval).back(), seconds) << interval;
    }
}

}  // namespace
}  // namespace vostel
