#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTemporaryDir>

#include "FakeNetwork.h"
#include "core/Background.h"
#include "core/GlobalSettings.h"
#include "monitors/network/NetworkModule.h"
#include "platform/Platform.h"
#include "statusbar/OffscreenBar.h"

namespace vostel {
namespace {

class FixedOrder : public ItemOrderStore {
  public:
    QStringList itemOrder() const override { return {}; }
    void setItemOrder(const QStringList&) override {}
};

// A whole item on the real scheduler, with a clock moved by hand and nothing real outside.
class NetworkModuleTest : public testing::Test {
  protected:
    NetworkModuleTest() {
        network->links = {ethernet("eth0", 2)};
        network->links[0].carrier = network->links[0].up = true;
        network->found = {{2, false, "192.0.2.7"}};
        outside.fetchWAN = [this](QObject*, WANIPFetcher::Completion done) {
            wanRequests.push_back(std::move(done));
        };
        outside.fetchTailscale = [this](QObject*, TailscaleProbe::Completion done) {
            tailscaleRequests.push_back(std::move(done));
        };
        // Says that it began, and by its end that it is gone.
        const std::string path = folder.filePath(QStringLiteral("helper")).toStdString();
        std::ofstream(path) << "#!/bin/sh\necho $$ >> " << pidFile() << "\nexec sleep 100\n";
        chmod(path.c_str(), 0755);
        outside.traffic.helper = path;
        settings.intervalOverride = 1.0;
    }
    void start() {
        module = std::make_unique<NetworkModule>(context, settings, outside);
        module->start();
    }
    // One second with so many bytes down, and a tenth of it up.
    void second(std::uint64_t bytes, double seconds = 1) {
        network->links[0].received += bytes;
        network->links[0].sent += bytes / 10;
        clock->now += seconds;
        scheduler.fire();
    }
    std::string pidFile() const { return folder.filePath(QStringLiteral("pids")).toStdString(); }
    std::vector<int> helpers() const {
        std::ifstream stream(pidFile());
        return {std::istream_iterator<int>(stream), {}};
    }
    long runningHelpers() const {
        const std::vector<int> all = helpers();
        return std::count_if(all.begin(), all.end(), [](int pid) { return kill(pid, 0) == 0; });
    }
    template <typename Condition>
    static bool waitFor(const Condition& condition) {
        const QDeadlineTimer deadline(20'000);
        while (!condition() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            usleep(2000);
        }
        return condition();
    }

    QTemporaryDir folder;
    HandClock* clock = new HandClock;
    FakeNetwork* network = new FakeNetwork;
    Platform platform = [this] {
        Platform result = makeNullPlatform();
        result.clock.reset(clock);
        result.network.reset(network);
        return result;
    }();
    DefaultsStore defaults{folder.filePath(QStringLiteral("s.plist")), nullptr};
    NotificationCenter center;
    GlobalSettings global{defaults, center};
    NetworkSettings settings{defaults, center, global};
    Background background;
    TickScheduler scheduler{*platform.clock};
    FixedOrder order;
    OffscreenBar bar{order};
    AppContext context{platform, background, scheduler, defaults, center,
                       global,   bar,        nullptr,   {},       {}};
    NetworkOutside outside;
    std::vector<WANIPFetcher::Completion> wanRequests;
    std::vector<TailscaleProbe::Completion> tailscaleRequests;
    std::unique_ptr<NetworkModule> module;
};

TEST_F(NetworkModuleTest, RatesPeaksAndTotals) {
    start();
    EXPECT_EQ(module->viewModel().current.value(), NetSample());
    double highest = 0;
    double highestUp = 0;
    for (const std::uint64_t bytes : {1000u, 5'000'000u, 200u, 0u, 7000u}) {
        second(bytes);
        const NetworkViewModel& model = module->viewModel();
        EXPECT_EQ(model.current.value(), (NetSample{double(bytes), double(bytes / 10)}));
        EXPECT_GE(model.peakDown.value(), highest) << "a peak fell";
        highest = model.peakDown.value();
        EXPECT_GE(model.peakUp.value(), highestUp) << "a peak fell";
        highestUp = model.peakUp.value();
    }
    EXPECT_EQ(highest, 5e6);
    EXPECT_EQ(highestUp, 5e5);
    EXPECT_EQ(module->viewModel().sessionDown.value(), 5'008'200);
    EXPECT_EQ(module->viewModel().sessionUp.value(), 500'820);
    EXPECT_EQ(module->viewModel().aggregate.value().size(), 6u);
    EXPECT_EQ(settings.knownInterfaces.value(), QStringList{QStringLiteral("eth0")});
    EXPECT_EQ(module->statusValues()[QStringLiteral("down")].toDouble(), 7000);
    EXPECT_EQ(module->valueText(), QStringLiteral("Network ↓ 6.8\u2009K/s ↑ 700\u2009B/s"));
    for (int i = 0; i < 100; ++i) {
        second(1);
    }
    EXPECT_EQ(module->viewModel().aggregate.value().size(), 60u);
    // The peaks are older than the history by now, and stay.
    EXPECT_EQ(module->viewModel().peakDown.value(), 5e6);
    EXPECT_EQ(module->viewModel().peakUp.value(), 5e5);
    EXPECT_EQ(module->statusValues()[QStringLiteral("peakDown")].toDouble(), 5e6);
    EXPECT_EQ(module->statusValues()[QStringLiteral("peakUp")].toDouble(), 5e5);
    const auto pieces = module->detailPopover()->findChildren<QWidget*>();
    EXPECT_TRUE(std::any_of(pieces.begin(), pieces.end(), [](const QWidget* piece) {
        return piece->accessibleName() ==
               QStringLiteral(
                   "Download 1.0\u2009B/s, peak 4.8\u2009M/s; upload 0.0\u2009B/s, "
                   "peak 488\u2009K/s");
    }));
}

TEST_F(NetworkModuleTest, NoSpikeAndNoStaleRateAfterAGap) {
    const struct {
        const char* fault;
        double seconds;
        std::uint64_t bytes;
    } rows[] = {
        {"suspended for eight hours", 28'800, 900'000'000'000},
        {"a stalled timer", 3.5, 50'000'000},
        {"the clock stands still", 0, 50'000'000},
    };
    for (const auto& row : rows) {
        start();
        second(1000);
        const double total = module->viewModel().sessionDown.value();
        network->links[0].received += row.bytes;
        clock->now += row.seconds;
        module->tick();
        EXPECT_EQ(module->viewModel().current.value(), NetSample()) << row.fault;
        EXPECT_EQ(module->viewModel().sessionDown.value(), total) << row.fault;
        EXPECT_EQ(module->viewModel().peakDown.value(), 1000) << row.fault;
        second(2000);
        EXPECT_EQ(module->viewModel().current.value().down, 2000) << row.fault;
        module.reset();
    }
}

TEST_F(NetworkModuleTest, AnAbsurdIntervalStillMeasures) {
    settings.intervalOverride = -3.0;
    start();
    second(500, 0.25);
    EXPECT_EQ(module->viewModel().current.value().down, 2000);
}

TEST_F(NetworkModuleTest, ProcessesAreWatchedOnlyWhileSomebodyLooks) {
    start();
    EXPECT_FALSE(module->watchesProcesses());
    for (int round = 1; round <= 3; ++round) {
        module->detailPopoverWillShow();
        module->detailPopoverWillShow();  // told twice
        const auto started = [&] { return runningHelpers() == 1; };
        ASSERT_TRUE(waitFor(started));
        EXPECT_TRUE(module->watchesProcesses());
        if (round < 3) {
            module->detailPopoverDidClose();
        } else {
            module->stop();  // with the popover open
        }
        EXPECT_FALSE(module->watchesProcesses());
        EXPECT_EQ(runningHelpers(), 0) << "a helper outlives the popover";
    }
    module->start();
    module->detailPopoverWillShow();
    module.reset();  // destroyed without a word
    EXPECT_EQ(runningHelpers(), 0);
}

TEST_F(NetworkModuleTest, AHelperThatHangsIsToldInThePopoverAndOnceInTheLog) {
    outside.traffic.silenceSeconds = outside.traffic.restartSeconds = 0.1;
    start();
    testing::internal::CaptureStderr();
    module->detailPopoverWillShow();
    const auto& state = module->viewModel().trafficState;
    EXPECT_EQ(state.value(), TrafficState::waiting);
    EXPECT_TRUE(waitFor([&] { return state.value() == TrafficState::silent; }));
    EXPECT_TRUE(waitFor([&] { return helpers().size() >= 3; })) << "nothing comes in its place";
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    module->detailPopoverDidClose();
    EXPECT_EQ(state.value(), TrafficState::waiting);
    EXPECT_EQ(runningHelpers(), 0);
}

TEST_F(NetworkModuleTest, ProbesAreAskedAtStartAndOnTheirTimers) {
    start();
    EXPECT_EQ(wanRequests.size(), 1u);
    EXPECT_EQ(tailscaleRequests.size(), 1u);
    for (int i = 0; i < 240; ++i) {
        wanRequests.back()(std::nullopt);
        tailscaleRequests.back()(std::nullopt);
        second(0);
    }
    EXPECT_NEAR(double(wanRequests.size()), 3, 1);
    EXPECT_NEAR(double(tailscaleRequests.size()), 25, 1);
    wanRequests.back()(std::nullopt);
    wanRequests.clear();
    module->detailPopoverWillShow();
    ASSERT_EQ(wanRequests.size(), 1u) << "opened: asked again";
    wanRequests[0](QStringLiteral("203.0.113.9"));
    EXPECT_EQ(module->viewModel().wanIP.value(), QStringLiteral("203.0.113.9"));
    TailscaleStatus status;
    status.ipv4 = "192.0.2.7";
    tailscaleRequests.back()(status);
    second(0);
    EXPECT_EQ(module->viewModel().interfaces.value().at(0).displayName, "Tailscale (eth0)");
    tailscaleRequests.back()(TailscaleStatus());
    second(0);
    EXPECT_EQ(module->viewModel().interfaces.value().at(0).displayName, "eth0");
    module->stop();
    const std::size_t asked = wanRequests.size() + tailscaleRequests.size();
    second(0, 500);
    EXPECT_EQ(wanRequests.size() + tailscaleRequests.size(), asked) << "asked after stop()";
}

// Services that do not answer: whatever the user does, one request of each kind is under way.
TEST_F(NetworkModuleTest, RequestsDoNotPileUp) {
    start();
    for (int round = 0; round < 50; ++round) {
        module->detailPopoverWillShow();
        module->detailPopoverDidClose();
        settings.lookUpWAN = false;
        settings.lookUpWAN = true;
        second(0, 130);  // every timer is due
    }
    EXPECT_EQ(wanRequests.size(), 1u);
    EXPECT_EQ(tailscaleRequests.size(), 1u);
    wanRequests[0](QStringLiteral("203.0.113.9"));
    EXPECT_EQ(module->viewModel().wanIP.value(), QStringLiteral("203.0.113.9"));
    module->detailPopoverWillShow();
    EXPECT_EQ(wanRequests.size(), 2u) << "an answer lets the next one go";
}

TEST_F(NetworkModuleTest, SwitchedOffNobodyIsAskedForThePublicAddress) {
    settings.lookUpWAN = false;
    start();
    for (int i = 0; i < 300; ++i) {
        second(0);
    }
    module->detailPopoverWillShow();
    EXPECT_TRUE(wanRequests.empty());
    EXPECT_FALSE(module->viewModel().looksUpWAN.value());
    settings.lookUpWAN = true;  // takes effect at once, and so does the way back
    ASSERT_EQ(wanRequests.size(), 1u);
    wanRequests[0](QStringLiteral("203.0.113.9"));
    module->detailPopoverWillShow();
    ASSERT_EQ(wanRequests.size(), 2u);
    settings.lookUpWAN = false;
    EXPECT_FALSE(module->viewModel().wanIP.value());
    wanRequests[1](QStringLiteral("203.0.113.9"));
    EXPECT_FALSE(module->viewModel().wanIP.value()) << "an answer that came too late";
}

TEST_F(NetworkModuleTest, TheChosenInterfacesCount) {
    network->links.push_back(ethernet("eth1", 3));
    network->links[1].carrier = network->links[1].up = true;
    settings.selectedInterfaces = QStringList{QStringLiteral("eth1"), QStringLiteral("gone0")};
    start();
    const struct {
        InterfaceMode mode;
        double down;
    } rows[] = {
        {InterfaceMode::all, 1300}, {InterfaceMode::automatic, 1300}, {InterfaceMode::custom, 300}};
    for (const auto& row : rows) {
        settings.interfaceMode = row.mode;
        network->links[1].received += 300;
        second(1000);
        EXPECT_EQ(module->viewModel().current.value().down, row.down) << int(row.mode);
    }
}

}  // namespace
}  // namespace vostel
