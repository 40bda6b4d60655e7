#include "app/updates/UpdateController.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vostel {

UpdateController::UpdateController(std::unique_ptr<Updater> source, AppSettings& appSettings,
                                   NotificationCenter& center, TickScheduler& ticks,
                                   Clock& injectedClock, Announce tell)
    : settings(appSettings),
      notifications(center),
      scheduler(ticks),
      clock(injectedClock),
      announce(std::move(tell)),
      updater(std::move(source)) {}

void UpdateController::start() {
    if (!started && unavailableReason().isEmpty()) {
        started = true;
        subscription =
            notifications.subscribe(AppSettings::changeNotification, [this] { followSetting(); });
        followSetting();
    }
}

QString UpdateController::unavailableReason() const {
    return updater ? updater->unavailableReason()
                   : QStringLiteral(
                         "This build of Vostel has no update feed: newer versions come from where "
                         "you got it.");
}

bool UpdateController::isAutomatic() const {
    return unavailableReason().isEmpty() && settings.checkForUpdates();
}

void UpdateController::setAutomatic(bool on) {
    settings.checkForUpdates = on;
}

// A look at the calendar may come late by half its interval, together with other timers.
void UpdateController::followSetting() {
    if (!isAutomatic()) {
        tick.reset();
    } else if (!tick) {
        tick = scheduler.every(dueInterval, dueInterval / 2, [this] { checkWhenDue(); });
    }
}

// By the calendar: the day goes on while the machine sleeps. A last check that lies ahead was
// stored under a clock that has been set back since.
void UpdateController::checkWhenDue() {
    const double since = now() - settings.lastUpdateCheck();
    if (!checking && clock.seconds() >= retryAt && (since < 0 || since >= checkInterval)) {
        begin();
    }
}

void UpdateController::checkForUpdates() {
    if (!unavailableReason().isEmpty()) {
        return;
    }
    asked = true;
    enter(State::Checking);
    if (!checking) {
        begin();
    }
}

QDateTime UpdateController::lastCheck() const {
    const double seconds = settings.lastUpdateCheck();
    return seconds > 0 ? QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::min(seconds, 1e11)))
                       : QDateTime();
}

void UpdateController::begin() {
    checking = true;
    updater->check([this](UpdateResult result) { end(std::move(result)); });
}

void UpdateController::end(UpdateResult result) {
    checking = false;
    const bool wasAsked = std::exchange(asked, false);
    if (result.end != UpdateResult::End::Done) {
        retryAt = clock.seconds() + retryInterval;
        report(result);
        if (wasAsked) {
            problem = result.error;
            enter(State::Failed);
        }
        return;
    }
    settings.lastUpdateCheck = now();
    found = std::move(result.offer);
    if (found && settings.announcedUpdate() != found->version) {
        settings.announcedUpdate = found->version;
        if (!wasAsked) {
            announce(QStringLiteral("Update Available"),
                     QStringLiteral("Vostel %1 is available. The General page of the settings "
                                    "opens its download page.")
                         .arg(found->version));
        }
    }
    enter(found ? State::Available : wasAsked ? State::UpToDate : State::Idle);
}

void UpdateController::report(const UpdateResult& result) {
    if (result.end == UpdateResult::End::Aborted) {
        delegate.didAbort(result.error);
    } else {
        delegate.didFinishCheck(result.error);
    }
}

void UpdateController::enter(State state) {
    current = state;
    notifications.post(changeNotification);
}

double UpdateController::now() const {
    return std::chrono::duration<double>(clock.calendar().time_since_epoch()).count();
}

}  // namespace vostel
