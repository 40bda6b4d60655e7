#pragma once

#include <array>

#include <QString>

namespace vostel {

// The refresh intervals that are offered, in seconds.
struct IntervalOptions {
    static constexpr std::array monitors{0.25, 0.5, 1.0, 2.0, 5.0};
    static constexpr std::array usage{30.0, 60.0, 300.0, 900.0};

    static constexpr double shortest = 0.02;    // seconds; no number counts as this
    static constexpr double longest = 86400.0;  // a day

    // A stored interval as it is used, within these bounds.
    static double bounded(double seconds);

    // "¼s", "½s", "5s"; from 60 on whole minutes, "15m". Of what bounded() makes of it.
    static QString label(double seconds);
};

}  // namespace vostel
