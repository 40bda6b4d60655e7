#pragma once

#include <functional>
#include <optional>

namespace vostel {

// Whoever asks a GPU for its load keeps it awake: each question starts its autosuspend delay anew,
// and an open management library holds it for good. So a card that may be powered down and has been
// idle for `lingers` is left alone for `rests`, long enough for the driver to power it down (5 s
// for amdgpu, about 6 to 10 s for NVIDIA's). If it is still awake then, something else keeps it so;
// it is asked again and, if idle still, left alone again. Someone who looks at the popover, or a
// powering up seen in between, ends the rest.
class GPURest {
  public:
    static constexpr double lingers = 10;  // seconds
    static constexpr double rests = 20;    // seconds

    // Whether the card, which is awake, may be asked at `now`.
    bool mayAsk(double now, bool someoneLooks) {
        if (someoneLooks) {
            busyAt.reset();
            restUntil = now;
        }
        return now >= restUntil;
    }

    // What came of it. `busy` is absent when it could not be told yet; `maySleep` is called only
    // when the answer matters.
    void asked(double now, std::optional<bool> busy, const std::function<bool()>& maySleep) {
        if (!busyAt || busy.value_or(false)) {
            busyAt = now;
        }
        if (busy && !*busy && now - *busyAt >= lingers && maySleep()) {
            restUntil = now + rests;
        }
    }

    // The card was found powered down. The next time it is awake it is asked at once.
    void slept() {
        busyAt.reset();
        restUntil = 0;
    }

  private:
    std::optional<double> busyAt;
    double restUntil = 0;
};

}  // namespace vostel
