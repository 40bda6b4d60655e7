#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QString>

#include "app/AppSettings.h"
#include "app/updates/Updater.h"
#include "app/updates/UpdaterDelegate.h"
#include "core/NotificationCenter.h"
#include "core/TickScheduler.h"

namespace vostel {

// When newer versions are looked for, and what came of it: once a day by itself, and when the user
// asks. One in the application; main thread. Everything it shows changes with a post of
// "updateStateChanged".
class UpdateController {
  public:
    static constexpr const char* changeNotification = "updateStateChanged";
    static constexpr double dueInterval = 600;      // seconds between looks at the calendar
    static constexpr double checkInterval = 86400;  // seconds of calendar time between checks
    static constexpr double retryInterval = 3600;   // seconds after a check that failed

    enum class State { Idle, Checking, UpToDate, Available, Failed };
    using Announce = std::function<void(const QString& title, const QString& body)>;

    // `updater` may be null: there is nothing to check then, and no timer. Borrows the rest.
    // `announce` tells the user of a version that a check of its own found.
    UpdateController(std::unique_ptr<Updater> updater, AppSettings& settings,
                     NotificationCenter& notifications, TickScheduler& scheduler, Clock& clock,
                     Announce announce);

    // Begins the checks of its own, some minutes from now; without this call it makes none.
    void start();

    // Why nothing can be checked, as a sentence; empty when it can.
    QString unavailableReason() const;
    bool isAutomatic() const;
    void setAutomatic(bool on);

    // Checks because the user wants to know: state() tells how it goes.
    void checkForUpdates();

    State state() const { return current; }
    const std::optional<UpdateOffer>& offer() const {
        return found;
    }  // known until a check ends it
    const QString& error() const { return problem; }  // of State::Failed
    QDateTime lastCheck() const;  // that succeeded, also by an earlier run; invalid: never

  private:
    void followSetting();
    void checkWhenDue();
    void begin();
    void end(UpdateResult result);
    void enter(State state);
    void report(const UpdateResult& result);
    double now() const;  // seconds since 1970

    AppSettings& settings;
    NotificationCenter& notifications;
    TickScheduler& scheduler;
    Clock& clock;
    Announce announce;
    UpdaterDelegate delegate;
    bool started = false;
    bool checking = false;
    bool asked = false;  // the user waits for the check that runs
    double retryAt = 0;  // on the steady clock
    State current = State::Idle;
    std::optional<UpdateOffer> found;
    QString problem;
    NotificationCenter::Subscription subscription;
    std::unique_ptr<TickScheduler::Tick> tick;
    std::unique_ptr<Updater> updater;  // goes first: no check ends into what is gone
};

}  // namespace vostel
