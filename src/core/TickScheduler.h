#pragma once

#include <functional>
#include <list>
#include <memory>

#include <QObject>
#include <QTimer>

#include "platform/Clock.h"

namespace vostel {

// Repeating timers of the main thread that wake the processor together. Each timer is due on the
// multiples of its interval on one common clock and may come late by its tolerance; a wake-up is
// put where it serves as many timers as possible. A stalled or suspended timer fires once
// afterwards, not once for each tick that it missed.
class TickScheduler : public QObject {
    Q_OBJECT

  public:
    // Seconds; anything shorter, or no number, becomes the first, anything longer the second.
    static constexpr double shortestInterval = 0.02;
    static constexpr double longestInterval = 1e9;
    static constexpr double largestFactor = 1000;

    // A running timer; deleting it stops it. May outlive the scheduler.
    class Tick {
      public:
        ~Tick();

      private:
        friend class TickScheduler;
        struct State;
        explicit Tick(std::shared_ptr<State> s) : state(std::move(s)) {}
        std::shared_ptr<State> state;
    };

    explicit TickScheduler(Clock& clock, QObject* parent = nullptr);
    ~TickScheduler() override;

    // `interval` and `tolerance` in seconds.
    [[nodiscard]] std::unique_ptr<Tick> every(double interval, double tolerance,
                                              std::function<void()> callback);

    // Multiplies every interval (2 on battery, when the user wants that); from 1 to largestFactor.
    void setIntervalFactor(double factor);

    // Seconds until the next wake-up, never negative; empty when no timer runs. For tests.
    std::optional<double> nextWakeUp() const;
    // Fires what is due now. The scheduler's own timer calls it; tests with a hand-moved clock do.
    void fire();

  private:
    void arm();
    double dueAfter(double now, const Tick::State& state) const;
    std::optional<double> wakeUpTime() const;

    Clock& clock;
    std::list<std::shared_ptr<Tick::State>> ticks;
    double factor = 1;
    QTimer timer;
    bool firing = false;
};

}  // namespace vostel
