#include "render/RateFormatter.h"

#include <array>
#include <charconv>
#include <cmath>

namespace vostel {

namespace {

constexpr std::array<char, 5> units = {'B', 'K', 'M', 'G', 'T'};

struct Scaled {
    std::string number;
    std::size_t unit = 0;
};

Scaled scaled(double value) {
    Scaled result;
    value = std::isfinite(value) && value > 0 ? value : 0;
    while (value >= 1024 && result.unit + 1 < units.size()) {
        value /= 1024;
        ++result.unit;
    }
    // The largest double has 309 digits before the point.
    std::array<char, 320> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::fixed, value >= 100 ? 0 : 1);
    result.number.assign(text.data(), end.ptr);
    result.number += "\u2009";
    return result;
}

}  // namespace

std::string RateFormatter::bytes(double count) {
    Scaled text = scaled(count);
    text.number += units[text.unit];
    if (text.unit > 0) {
        text.number += 'B';
    }
    return text.number;
}

std::string RateFormatter::rate(double bytesPerSecond) {
    Scaled text = scaled(bytesPerSecond);
    text.number += units[text.unit];
    text.number += "/s";
    return text.number;
}

}  // namespace vostel
