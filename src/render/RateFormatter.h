#pragma once

#include <string>

namespace vostel {

// Texts of byte counts and byte rates: 1024 as the base, a thin space (U+2009) before the unit,
// UTF-8, a decimal point in every locale. Negative and non-finite input reads as 0.
class RateFormatter {
  public:
    // 1536 -> "1.5 KB", 102400 -> "100 KB". Beyond 1024^5 the unit stays "TB".
    static std::string bytes(double count);

    // Bytes per second. 1536 -> "1.5 K/s", 0 -> "0.0 B/s".
    static std::string rate(double bytesPerSecond);
};

}  // namespace vostel
