#pragma once

#include <array>

#include <QString>

namespace vostel {

// The refresh intervals that are offered, in seconds.
struct IntervalOptions {
    static constexpr std::array monitors{0.25, 0.5, 1.0, 2.0, 5.0};
    static constexpr std::array usage{30.0, 60.0, 300.0, 900.0};

    // "¼s", "½s", "5s"; from 60 on whole minutes, "15m".
    static QString label(double seconds);
};

}  // namespace vostel
