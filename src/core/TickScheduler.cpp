#include "core/TickScheduler.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vostel {

struct TickScheduler::Tick::State {
    double interval = 1;
    double tolerance = 0;
    double due = 0;
    std::function<void()> callback;
    bool running = true;
    TickScheduler* owner = nullptr;
};

TickScheduler::Tick::~Tick() {
    state->running = false;
    if (state->owner != nullptr && !state->owner->firing) {
        state->owner->ticks.remove(state);
        state->owner->arm();
    }
}

TickScheduler::TickScheduler(Clock& injectedClock, QObject* parent)
    : QObject(parent), clock(injectedClock) {
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &TickScheduler::fire);
}

TickScheduler::~TickScheduler() {
    for (const auto& tick : ticks) {
        tick->owner = nullptr;
    }
}

std::unique_ptr<TickScheduler::Tick> TickScheduler::every(double interval, double tolerance,
                                                          std::function<void()> callback) {
    auto state = std::make_shared<Tick::State>();
    state->interval =
        interval > shortestInterval ? std::min(interval, longestInterval) : shortestInterval;
    state->tolerance = tolerance > 0 ? std::min(tolerance, state->interval / 2) : 0;
    state->callback = std::move(callback);
    state->owner = this;
    state->due = dueAfter(clock.seconds(), *state);
    ticks.push_back(state);
    arm();
    return std::unique_ptr<Tick>(new Tick(std::move(state)));
}

void TickScheduler::setIntervalFactor(double newFactor) {
    factor = newFactor > 1 ? std::min(newFactor, largestFactor) : 1;
    const double now = clock.seconds();
    for (const auto& tick : ticks) {
        tick->due = dueAfter(now, *tick);
    }
    arm();
}

// The first multiple of the interval that lies at least half an interval ahead, so that a timer
// that was just restarted does not fire twice in a row.
double TickScheduler::dueAfter(double now, const Tick::State& state) const {
    const double interval = state.interval * factor;
    return std::ceil((now + interval / 2) / interval) * interval;
}

// The latest due time among the timers that are due before the most impatient one runs out of
// tolerance.
std::optional<double> TickScheduler::wakeUpTime() const {
    if (ticks.empty()) {
        return std::nullopt;
    }
    double deadline = INFINITY;
    for (const auto& tick : ticks) {
        deadline = std::min(deadline, tick->due + tick->tolerance * factor);
    }
    double result = -INFINITY;
    for (const auto& tick : ticks) {
        if (tick->due <= deadline) {
            result = std::max(result, tick->due);
        }
    }
    return result;
}

std::optional<double> TickScheduler::nextWakeUp() const {
    const auto time = wakeUpTime();
    return time ? std::optional(std::max(0.0, *time - clock.seconds())) : std::nullopt;
}

void TickScheduler::arm() {
    if (firing) {
        return;
    }
    if (const auto wait = nextWakeUp()) {
        // Rounded up: a wake-up a fraction of a millisecond early would find nothing due.
        timer.start(static_cast<int>(std::min(std::ceil(*wait * 1000), 1e9)));
    } else {
        timer.stop();
    }
}

void TickScheduler::fire() {
    firing = true;
    const double now = clock.seconds();
    // Callbacks may start and stop timers, this one included.
    const std::list<std::shared_ptr<Tick::State>> snapshot = ticks;
    for (const auto& tick : snapshot) {
        if (tick->running && tick->due <= now) {
            tick->due = dueAfter(now, *tick);
            tick->callback();
        }
    }
    firing = false;
    ticks.remove_if([](const auto& tick) { return !tick->running; });
    arm();
}

}  // namespace vostel
