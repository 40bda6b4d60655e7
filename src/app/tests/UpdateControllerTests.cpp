#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "FakeUpdater.h"
#include "app/updates/UpdateController.h"
#include "core/tests/FakeClock.h"

namespace vostel {
namespace {

class UpdateControllerTest : public testing::Test {
  protected:
    UpdateControllerTest() { restart(); }
    // The program anew, with the settings as they were written.
    void restart() {
        controller.reset();
        settings = std::make_unique<AppSettings>(store, notifications);
        auto source = std::make_unique<FakeUpdater>();
        updater = source.get();
        controller = std::make_unique<UpdateController>(
            std::move(source), *settings, notifications, scheduler, clock,
            [this](const QString& title, const QString& body) {
                announced << title + u'|' + body;
            });
        controller->start();
    }
    // Time goes on as the scheduler sees it; the number of checks begun meanwhile.
    int pass(double seconds) {
        const int before = updater->checks;
        for (const double end = clock.now + seconds; clock.now < end;) {
            clock.now +=
                std::min(scheduler.nextWakeUp().value_or(seconds) + 0.001, end - clock.now);
            scheduler.fire();
        }
        return updater->checks - before;
    }

    QTemporaryDir folder;
    FakeClock clock;
    NotificationCenter notifications;
    DefaultsStore store{folder.filePath(QStringLiteral("s.plist")), nullptr};
    TickScheduler scheduler{clock};
    QStringList announced;
    FakeUpdater* updater = nullptr;
    std::unique_ptr<AppSettings> settings;
    std::unique_ptr<UpdateController> controller;
};

constexpr double minute = 60;
constexpr double hour = 3600;

TEST_F(UpdateControllerTest, checksMinutesAfterTheStartAndThenOnceADay) {
    clock.now = 1.7e9;
    restart();
    EXPECT_EQ(pass(4 * minute), 0);
    EXPECT_EQ(pass(26 * minute), 1);
    updater->end({});
    EXPECT_EQ(pass(23 * hour), 0);
    restart();
    EXPECT_EQ(pass(minute), 0) << "a new start is no reason";
    EXPECT_EQ(pass(2 * hour), 1);
    updater->end({});
    clock.now += 30 * 24 * hour;  // asleep
    EXPECT_EQ(pass(30 * minute), 1);
    updater->end({});
    clock.now -= 1000 * 24 * hour;  // the calendar was wrong; as the stored time, it lies ahead now
    restart();
    EXPECT_EQ(pass(30 * minute), 1);
}

TEST_F(UpdateControllerTest, aFailureIsTriedAgainLaterAndTroublesNobody) {
    clock.now = 1.7e9;
    restart();
    EXPECT_EQ(pass(30 * minute), 1);
    updater->end(failure);
    EXPECT_EQ(controller->state(), UpdateController::State::Idle);
    EXPECT_FALSE(controller->lastCheck().isValid());
    EXPECT_EQ(pass(55 * minute), 0);
    EXPECT_EQ(pass(30 * minute), 1);
    EXPECT_EQ(announced, QStringList());
}

// Catches a failure that is not logged, or whose text is taken for the other one's.
TEST_F(UpdateControllerTest, failuresAreLoggedByTheirKind) {
    testing::internal::CaptureStderr();
    controller->checkForUpdates();
    updater->end(failure);
    controller->checkForUpdates();
    updater->end({UpdateResult::End::Error, {}, QStringLiteral("no feed")});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[Vostel] update aborted: no network\n"
              "[Vostel] update check finished with error: no feed\n");
}

TEST_F(UpdateControllerTest, eachVersionIsAnnouncedOnce) {
    clock.now = 1.7e9;
    restart();
    pass(hour);
    updater->end(offerOf("2.0"));
    ASSERT_EQ(announced.size(), 1);
    EXPECT_TRUE(announced[0].startsWith(QStringLiteral("Update Available|Vostel 2.0 is")));
    EXPECT_EQ(controller->state(), UpdateController::State::Available);
    restart();
    EXPECT_EQ(pass(25 * hour), 1);
    updater->end(offerOf("2.0"));
    EXPECT_EQ(announced.size(), 1) << "also by the next run";
    EXPECT_EQ(controller->state(), UpdateController::State::Available);
    EXPECT_EQ(pass(25 * hour), 1);
    updater->end(offerOf("2.1"));
    EXPECT_EQ(announced.size(), 2);
    controller->checkForUpdates();
    updater->end(offerOf("2.2"));
    EXPECT_EQ(pass(25 * hour), 1);
    updater->end(offerOf("2.2"));
    EXPECT_EQ(announced.size(), 2) << "the user has seen it already";
}

TEST_F(UpdateControllerTest, whoAsksIsAnswered) {
    using State = UpdateController::State;
    std::vector<State> states;
    const auto watch = notifications.subscribe(UpdateController::changeNotification, [&] {
        if (states.empty() || states.back() != controller->state()) {
            states.push_back(controller->state());
        }
    });
    controller->setAutomatic(false);
    for (const auto& [result, state] : std::vector<std::pair<UpdateResult, State>>{
             {UpdateResult(), State::UpToDate},
             {failure, State::Failed},
             {offerOf("2.0"), State::Available},
             {{UpdateResult::End::Error, {}, QStringLiteral("no feed")}, State::Failed},
             {UpdateResult(), State::UpToDate}}) {
        controller->checkForUpdates();
        controller->checkForUpdates();  // impatiently
        updater->end(result);
        EXPECT_EQ(states, std::vector({State::Checking, state}));
        if (state == State::Failed) {
            EXPECT_EQ(controller->error(), result.error);
        }
        states.clear();
    }
    EXPECT_FALSE(controller->offer()) << "withdrawn";
    EXPECT_EQ(announced, QStringList());
}

TEST_F(UpdateControllerTest, whoAsksDuringACheckGetsItsResult) {
    clock.now = 1.7e9;
    restart();
    pass(hour);
    controller->checkForUpdates();
    EXPECT_EQ(controller->state(), UpdateController::State::Checking);
    EXPECT_EQ(updater->checks, 1);
    updater->end(failure);
    EXPECT_EQ(controller->state(), UpdateController::State::Failed);
}

// Catches a timer that wakes the machine for nothing.
TEST_F(UpdateControllerTest, nothingRunsWhereNothingIsChecked) {
    EXPECT_TRUE(scheduler.nextWakeUp());
    controller->setAutomatic(false);
    EXPECT_FALSE(scheduler.nextWakeUp());
    controller->setAutomatic(true);
    EXPECT_TRUE(scheduler.nextWakeUp());
    controller = std::make_unique<UpdateController>(nullptr, *settings, notifications, scheduler,
                                                    clock, nullptr);
    controller->start();
    controller->checkForUpdates();
    EXPECT_FALSE(scheduler.nextWakeUp());
    EXPECT_FALSE(controller->isAutomatic());
    EXPECT_EQ(controller->state(), UpdateController::State::Idle);
    EXPECT_FALSE(controller->unavailableReason().isEmpty());
}

}  // namespace
}  // namespace vostel
