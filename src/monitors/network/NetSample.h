#pragma once

namespace vostel {

// Traffic of one moment, in bytes per second. Never negative, never infinite.
struct NetSample {
    double down = 0;  // received
    double up = 0;    // sent

    bool operator==(const NetSample&) const = default;
};

}  // namespace vostel
