#include <gtest/gtest.h>

#include <algorithm>

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include "app/AppDelegate.h"
#include "app/BarSwitch.h"
#include "app/ModuleTable.h"
#include "statusbar/tests/PrivateBus.h"

namespace vostel {
namespace {

// The bar of a program that believes in a display. Here is none, so what is shown instead of a dock
// bar is the off-screen bar.
struct BarSwitchTest : testing::Test {
    PrivateBus bus;
    QTemporaryDir folder;
    AppServices services{makeLinuxPlatform(SystemRoots::ofThisMachine()),
                         folder.filePath(QStringLiteral("settings.plist"))};
    ItemOrder order{services.defaults, itemNames()};
    const CommandLine commandLine = [this] {
        CommandLine line;
        line.imagePath = folder.filePath(QStringLiteral("bar.png"));
        return line;
    }();
    const QByteArray addressBefore = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    std::unique_ptr<BusLink> session;
    std::unique_ptr<BarSwitch> bars;
    int switches = 0;

    BarSwitchTest() {
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toLocal8Bit());
        services.app.bar = QStringLiteral("offscreen");
        session = std::make_unique<BusLink>(bus.address());
        bars = std::make_unique<BarSwitch>(commandLine, Display::X11, services, order, *session);
        bars->didSwitch = [this] { ++switches; };
        waitUntil([this] { return session->isOpen(); });
    }
    ~BarSwitchTest() override {
        bus.thaw();
        bars.reset();
        qputenv("DBUS_SESSION_BUS_ADDRESS", addressBefore);
    }

    // The longest time, in ms, in which the event loop did not turn while it ran for `seconds`.
    static qint64 longestDelay(double seconds) {
        QElapsedTimer all;
        QElapsedTimer turn;
        qint64 longest = 0;
        QTimer ticks;
        ticks.setTimerType(Qt::PreciseTimer);
        ticks.callOnTimeout([&] { longest = std::max(longest, turn.restart()); });
        ticks.start(1);
        all.start();
        turn.start();
        waitUntil([&] { return all.hasExpired(static_cast<qint64>(seconds * 1000)); });
        return longest;
    }
};

TEST_F(BarSwitchTest, ABusThatHangsHoldsUpNoChange) {
    bus.freeze();
    services.app.bar = QStringLiteral("tray");
    const qint64 delay = longestDelay(4);  // it is asked twice, a second each
    RecordProperty("longestDelay", std::to_string(delay));
    EXPECT_LT(delay, 500);
    EXPECT_EQ(switches, 0);  // there is nothing but the bar that is shown
    bus.thaw();
    services.app.bar = QStringLiteral("auto");
    services.app.bar = QStringLiteral("tray");
    EXPECT_TRUE(waitUntil([this] { return switches == 1; }));
    EXPECT_EQ(bars->kind(), BarKind::Tray);
}

// The answer to an earlier wish must not undo a later one.
TEST_F(BarSwitchTest, TheLastWishCounts) {
    for (int i = 0; i < 5; ++i) {
        services.app.bar = QStringLiteral("tray");
        waitUntil([] { return true; });
        services.app.bar = QStringLiteral("offscreen");
        waitUntil([] { return true; });
    }
    longestDelay(1);
    EXPECT_EQ(bars->kind(), BarKind::Offscreen);
    services.app.bar = QStringLiteral("tray");
    EXPECT_TRUE(waitUntil([this] { return bars->kind() == BarKind::Tray; }));
    services.app.bar = QStringLiteral("offscreen");
    EXPECT_TRUE(waitUntil([this] { return bars->kind() == BarKind::Offscreen; }));
}

TEST_F(BarSwitchTest, WithoutADisplayNoWindowIsMade) {
    ASSERT_TRUE(services.isFirstRun);
    AppDelegate delegate(services, *bars);
    delegate.hasDisplay = false;
    testing::internal::CaptureStdout();
    delegate.didFinishLaunching();
    EXPECT_FALSE(delegate.showSettings());
    EXPECT_FALSE(delegate.settingsWindow.isOpen());
    EXPECT_NE(
        testing::internal::GetCapturedStdout().find(services.defaults.filePath().toStdString()),
        std::string::npos);
    delegate.willTerminate();
}

}  // namespace
}  // namespace vostel
