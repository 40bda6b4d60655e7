#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/GPUSource.h"
#include "platform/linux/DrmCards.h"

namespace vostel {

// The time that an Intel card spends with its GTs (graphics, and media where it is apart) powered
// down in RC6: under card/gt/gtN (i915), card/power (i915 before 5.19) or device/tileN/gtN/gtidle
// (xe), milliseconds.
class IdleResidency {
  public:
    // The card must be awake: its directories are searched. GTs with RC6 switched off are left out.
    explicit IdleResidency(const DrmCard& card);

    static constexpr double shortestSpan = 0.1;  // seconds

    bool exists() const { return !gts.empty(); }

    // Reads the counters. The busy fraction is of the GT that idled least since the previous call;
    // empty when that is longer ago than `longestGap`, at the first call, and when a counter could
    // not be read or started anew. Counters of milliseconds tell nothing over less than
    // `shortestSpan`: then it is what it was.
    std::optional<double> read(double now, double longestGap);

    // The card is about to be left alone: the next read starts anew.
    void forget();

    // Channel "GPUPH" with the states "OFF" and "ON": what all calls of read() measured.
    std::vector<GPUResidencyChannel> channels() const;

  private:
    struct Gt {
        std::string path;
        std::optional<double> idle;  // milliseconds
    };
    std::vector<Gt> gts;
    std::optional<double> lastBusy;
    double lastAt = 0;
    double off = 0;
    double on = 0;
};

}  // namespace vostel
